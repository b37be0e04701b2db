// Powers of floats, within a few units of their last place: cube roots of 2^-7 to 2, and x^0.45 of 2^-21 to 1 as a
// byte.

#ifndef QV_POWERS_ONCE
#define QV_POWERS_ONCE
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/exact_math.h"

namespace qv::blocks {

// x^power for 32 middles of x, and what makes these one. Bits 5 from `shift` on of a float tell which is near.
struct NearPowers {
  NearPowers(int bits_shift, uint32_t first, double power, double scale) : shift(bits_shift) {
    for (uint32_t i = 0; i < 32; ++i) {
      const uint32_t bits = (first + i) << shift;
      const auto begin = std::bit_cast<float>(bits), end = std::bit_cast<float>(bits + (1u << shift));
      const double middle = (static_cast<double>(begin) + end) / 2;
      powers[(first + i) % 32] = static_cast<float>(RealPower(middle, power) * scale);
      inverses[(first + i) % 32] = static_cast<float>(1 / middle);
    }
  }
  int shift;
  std::array<float, 32> powers{}, inverses{};
};

}  // namespace qv::blocks
#endif  // QV_POWERS_ONCE

#if defined(QV_POWERS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_POWERS_INL_H
#undef QV_POWERS_INL_H
#else
#define QV_POWERS_INL_H
#endif

#include "qvclr/kernels/floats-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS && HWY_TARGET <= HWY_AVX3

HWY_INLINE FloatVector LookUp(const std::array<float, 32>& table, IntVector indices) {
  return FloatVector{
      _mm512_permutex2var_ps(_mm512_loadu_ps(table.data()), indices.raw, _mm512_loadu_ps(table.data() + 16))};
}
// (1 + rest)^power of the rest that `x` is off its middle, by the coefficients of rest, rest^2, ...
template <typename... Coefficients>
HWY_INLINE FloatVector NearPower(FloatVector x, const blocks::NearPowers& near, Coefficients... coefficients) {
  const IntVector index{_mm512_srli_epi32(hn::BitCast(I32(), x).raw, static_cast<unsigned>(near.shift))};
  const auto power = LookUp(near.powers, index);
  const auto rest = hn::MulSub(x, LookUp(near.inverses, index), SetFloat(1));
  return hn::MulAdd(hn::Mul(power, rest), Polynomial(rest, coefficients...), power);
}
HWY_INLINE FloatVector CubeRoot(FloatVector x, const blocks::NearPowers& near) {
  return NearPower(x, near, 0.333331882, -0.111109981, 0.0621977601, -0.0415175288);
}
HWY_INLINE FloatVector ByteOfLinear(FloatVector x, const blocks::NearPowers& near) {
  return hn::Add(
      NearPower(x, near, 0.450002999, -0.123752471, 0.0637236567, -0.0405840673, 0.0326779655, -0.0250203402),
      SetFloat(0.5));
}

#elif QV_HAS_VECTORS

// A float's bits are nearly its logarithm: with a third taken off, that of the inverse root.
HWY_INLINE FloatVector CubeRoot(FloatVector x, const blocks::NearPowers& /*near*/) {
  const auto bits = FloatOf(hn::BitCast(I32(), x));
  const auto inverse_root = hn::BitCast(F32(), WholeOf(hn::MulAdd(bits, SetFloat(-1.0 / 3), SetFloat(1419898880))));
  const auto product = hn::Mul(x, hn::Mul(inverse_root, inverse_root));
  const auto rest = hn::MulSub(product, inverse_root, SetFloat(1));  // within 0.102
  // (1 + rest)^(-2/3)
  const auto slope = Polynomial(rest, -0.666666667, 0.555541896, -0.49381415, 0.457913939, -0.427486664);
  return hn::MulAdd(hn::Mul(product, rest), slope, product);
}

// By the binary logarithm.
HWY_INLINE FloatVector ByteOfLinear(FloatVector x, const blocks::NearPowers& /*near*/) {
  const auto bits = hn::BitCast(I32(), x);
  const auto exponent = hn::ShiftRight<23>(hn::Sub(bits, hn::Set(I32(), 0x3f400000)));  // of x / 0.75
  const auto rest = hn::Sub(hn::BitCast(F32(), hn::Sub(bits, hn::ShiftLeft<23>(exponent))), SetFloat(1));
  // 0.45 log2(1 + rest) / rest
  const auto slope = Polynomial(rest, 0.649212872, -0.324607536, 0.216379199, -0.162165731, 0.130619032, -0.112686494,
                                0.0909344648, -0.0422532435);
  const auto power = hn::MulAdd(FloatOf(exponent), SetFloat(0.45), hn::Mul(rest, slope));
  const auto whole = hn::Round(power);
  // 255 x 2^part
  const auto part =
      Polynomial(hn::Sub(power, whole), 255.000019, 176.752533, 61.2563741, 14.1534106, 2.46738814, 0.341467016);
  const auto scaled = hn::Add(hn::BitCast(I32(), part), hn::ShiftLeft<23>(WholeOf(whole)));
  return hn::Add(hn::BitCast(F32(), scaled), SetFloat(0.5));
}

#endif

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
