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
  int doubtful = 0;          // or a power of two: with a fraction of fewer 65536ths it is worked out in reals
};

// Weights beyond two 16-bit ones are taken in two digits: the floors nest. The bias is added to the lower ones.
constexpr bool IsWide(const Form& form) {
  return std::ranges::any_of(form.of, [](int64_t weight) { return weight < 2 * INT16_MIN || weight > 2 * INT16_MAX; });
}
// Products stay below 2^28: of four weights and bytes, or of two weights and words up to 2047.
constexpr bool LeavesRoom(const Form& form) {
  constexpr int64_t kRoom = (int64_t{1} << 31) - (int64_t{1} << 28);
  return -kRoom < form.bias && form.bias < kRoom;
}
constexpr int kFractionBits = 16;  // left to sums that may be in doubt
constexpr int DigitBits(const Form& form) { return form.doubtful != 0 ? form.shift - kFractionBits : 15; }
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

// None of these bits is set in a sum that is in doubt.
constexpr int32_t DoubtBits(const Form& form) { return (1 << kFractionBits) - form.doubtful; }

constexpr int64_t Scaled(double value, int bits) {
  return static_cast<int64_t>(value * static_cast<double>(int64_t{1} << bits) + (value < 0 ? -0.5 : 0.5));
}

// a x + b y + c z + offset of bytes, in pairs (x, y) and (z, y); the lower digits are bytes as well. All weights are
// rounded up, or down toward zero, so that the error grows from black to white. The bias puts a whole sum of white just
// beyond doubt, by 4 65536ths above, or toward zero just below, as it is never positive there; and so all other whole
// sums between that and the exact one: in doubt, never wrong.
constexpr int kByteDigitBits = 7;
constexpr Form OfBytes(double a, double b, double c, double offset, bool toward_zero = false) {
  constexpr int kBits = kFractionBits + kByteDigitBits, kDoubtful = 4;
  double bias = toward_zero ? -1 : kDoubtful << kByteDigitBits;
  const auto scaled = [&](double weight) {  // rounded up, or down toward zero
    const double exact = weight * (1 << kBits);
    auto whole = static_cast<int64_t>(exact);
    if (toward_zero && exact < static_cast<double>(whole)) --whole;
    if (!toward_zero && exact > static_cast<double>(whole)) ++whole;
    bias += 255 * (exact - static_cast<double>(whole));
    return whole;
  };
  const int64_t of_x = scaled(a), of_y = scaled(b), of_z = scaled(c);
  // What is too much for a high digit of 16 bits goes to the second y.
  const int64_t of_second_y = -0.5 < b && b < 0.5 ? 0 : HighDigit(of_y / 2, kByteDigitBits) * (1 << kByteDigitBits);
  const int64_t rounding = offset == 0 ? 0 : 1;  // of the offset; no sum of white is whole then
  if (bias < static_cast<double>(rounding)) throw "a whole sum would come out too small";
  return {{of_x, of_y - of_second_y, of_z, of_second_y},
          Scaled(offset, kBits) + Scaled(bias, 0) - rounding,
          kBits,
          toward_zero,
          kDoubtful};
}

// (a x + b y) / 2^kScaleBits of words that carry kScaleBits zeros below. The lean, lean_x x + lean_y y + lift 65536ths
// of the words without these, is added to every sum. It is chosen to be 32 or more for many whole sums that the reals
// keep, which are then out of doubt, and 0 to 31 for all that they may round below.
template <int kScaleBits>
constexpr Form OfWords(double a, double b, double lean_x, double lean_y, double lift) {
  constexpr int kBits = kFractionBits + 15;
  constexpr double kUnit = 1.0 / (1 << kFractionBits), kScale = 1 << kScaleBits;
  return {{Scaled((a + lean_x * kUnit) / kScale, kBits), Scaled((b + lean_y * kUnit) / kScale, kBits), 0, 0},
          Scaled(lift * kUnit, kBits),
          kBits,
          false,
          32};
}

}  // namespace qv::forms
