// Affine forms in whole numbers, as the vector rows evaluate them, and the byte orders that bring their channels in.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace qv::forms {

// floor((of[0] a + of[1] b + of[2] c + of[3] d + bias) / 2^shift) of two pairs of channels, (a, b) and (c, d). Below
// 2^30 each weight.
struct Form {
  std::array<int64_t, 4> of;
  int64_t bias;
  int shift;
  bool toward_zero = false;  // instead of the floor
  bool near_whole = false;   // wrong next to whole numbers: to be worked out in reals there
};

// Weights beyond 16 bits are taken in two digits: the floors nest.
constexpr int kDigitBits = 15;
constexpr bool IsWide(const Form& form) {
  return std::ranges::any_of(form.of, [](int64_t weight) { return weight < INT16_MIN || weight > INT16_MAX; });
}
constexpr int64_t HighDigit(int64_t weight) { return (weight + (1 << (kDigitBits - 1))) >> kDigitBits; }
constexpr int64_t LowDigit(int64_t weight) { return weight - HighDigit(weight) * (1 << kDigitBits); }

// The lower digit holds the bias too, while that leaves room for the products.
constexpr bool IsBiasWide(const Form& form) { return form.bias < -(1 << 30) || form.bias > 1 << 30; }
constexpr int64_t FirstBias(const Form& form) { return IsBiasWide(form) ? LowDigit(form.bias) : form.bias; }

// Two 16-bit weights as they lie in a vector.
constexpr int32_t PairOfWeights(int64_t first, int64_t second) {
  return static_cast<int32_t>(static_cast<uint32_t>(first & 0xFFFF) | static_cast<uint32_t>(second & 0xFFFF) << 16);
}

// a x + b y + c z + offset, to `kBits` bits of fraction. What the lower digit leaves of these may be one unit off; with
// a unit added, whole numbers are in doubt where its fraction is 0 or 1.
template <int kBits = 30>
constexpr Form Approximation(double a, double b, double c, double offset, bool toward_zero = false) {
  constexpr auto kScaled = [](double value) {
    return static_cast<int64_t>(value * (1 << kBits) + (value < 0 ? -0.5 : 0.5));
  };
  return {{kScaled(a), kScaled(b), kScaled(c), 0}, kScaled(offset) + (1 << kDigitBits), kBits, toward_zero, true};
}
constexpr int32_t DoubtBits(const Form& form) { return (1 << (form.shift - kDigitBits)) - 2; }

}  // namespace qv::forms
