// Affine forms in whole numbers, as the vector rows evaluate them, and the byte orders that bring their channels in.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace qv::forms {

// floor((of[0] a + of[1] b + of[2] c + of[3] d + bias) / 2^shift) of two pairs of channels, (a, b) and (c, d).
struct Form {
  std::array<int64_t, 4> of;
  int64_t bias;
  int shift;
  bool toward_zero = false;  // instead of the floor
  bool near_whole = false;   // wrong next to whole numbers: to be worked out in reals there
};

// Weights beyond two 16-bit ones are taken in two digits: the floors nest. The lower digit holds the bias too, which
// leaves room for its products.
constexpr bool IsWide(const Form& form) {
  return std::ranges::any_of(form.of, [](int64_t weight) { return weight < 2 * INT16_MIN || weight > 2 * INT16_MAX; });
}
constexpr bool LeavesRoom(const Form& form) {
  constexpr int64_t kRoom = (int64_t{1} << 31) - (1 << 25);
  return -kRoom < form.bias && form.bias < kRoom;
}
constexpr int kFractionBits = 16;  // left of what is near whole numbers
constexpr int DigitBits(const Form& form) { return form.near_whole ? form.shift - kFractionBits : 15; }
constexpr int64_t HighDigit(int64_t weight, int bits) { return (weight + (int64_t{1} << (bits - 1))) >> bits; }
constexpr int64_t LowDigit(int64_t weight, int bits) { return weight - HighDigit(weight, bits) * (int64_t{1} << bits); }
constexpr int ShiftOfSum(const Form& form) { return form.shift - (IsWide(form) ? DigitBits(form) : 0); }

// Two 16-bit weights as they lie in a vector.
constexpr int32_t PairOfWeights(int64_t first, int64_t second) {
  return static_cast<int32_t>(static_cast<uint32_t>(first & 0xFFFF) | static_cast<uint32_t>(second & 0xFFFF) << 16);
}

// Three 8-bit weights likewise.
constexpr int32_t ThreeWeights(int64_t first, int64_t second, int64_t third) {
  return static_cast<int32_t>((first & 0xFF) | (second & 0xFF) << 8 | (third & 0xFF) << 16);
}

// Whole numbers come out with a fraction below 4: there they are in doubt.
constexpr int32_t kDoubtBits = (1 << kFractionBits) - 4;

constexpr int64_t Scaled(double value, int bits) {
  return static_cast<int64_t>(value * static_cast<double>(int64_t{1} << bits) + (value < 0 ? -0.5 : 0.5));
}

// a x + b y + c z + offset of bytes, in pairs (x, y) and (z, y); the lower digits are bytes as well. Each weight is
// half a unit off at most. With what the bias adds for those that were rounded down, a whole number never comes out too
// small, and too great by less than 386 of these units, where a fraction of 4 has 512.
constexpr int kByteDigitBits = 7;
constexpr Form OfBytes(double a, double b, double c, double offset, bool toward_zero = false) {
  constexpr int kBits = kFractionBits + kByteDigitBits;
  double rounded_down = 0;
  const auto scaled = [&](double weight) {
    const int64_t whole = Scaled(weight, kBits);
    rounded_down += std::max(0.0, weight * (1 << kBits) - static_cast<double>(whole));
    return whole;
  };
  const int64_t of_x = scaled(a), of_y = scaled(b), of_z = scaled(c);
  const bool fits = -0.5 < b && b < 0.5;
  const int64_t of_second_y = fits ? 0 : HighDigit(of_y / 2, kByteDigitBits) * (1 << kByteDigitBits);
  return {{of_x, of_y - of_second_y, of_z, of_second_y},
          Scaled(offset, kBits) + static_cast<int64_t>(255 * rounded_down) + 2,
          kBits,
          toward_zero,
          true};
}

// a x + b y of numbers below 2^10, with a unit added to the fraction, of which the weights are a small part off.
constexpr Form OfWords(double a, double b) {
  constexpr int kDigit = 15, kBits = kFractionBits + kDigit;
  return {{Scaled(a, kBits), Scaled(b, kBits), 0, 0}, 1 << kDigit, kBits, false, true};
}

}  // namespace qv::forms
