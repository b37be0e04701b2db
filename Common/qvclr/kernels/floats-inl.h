// Byte vectors as four vectors of 32-bit integers or floats, for formulas that single precision settles for nearly all
// pixels: those that it leaves in doubt are converted by the pixel function.

#ifndef QV_FLOATS_ONCE
#define QV_FLOATS_ONCE
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qv::blocks {

// A value for every byte, also as four tables of the bytes of the values.
struct FloatTable {
  explicit FloatTable(const std::array<double, 256>& exact) {
    for (size_t i = 0; i < values.size(); ++i) {
      values[i] = static_cast<float>(exact[i]);
      const auto bits = std::bit_cast<uint32_t>(values[i]);
      for (size_t byte = 0; byte < 4; ++byte) bytes[byte][i] = static_cast<uint8_t>(bits >> (8 * byte));
    }
  }
  std::array<float, 256> values{};
  std::array<std::array<uint8_t, 256>, 4> bytes{};
};

}  // namespace qv::blocks
#endif  // QV_FLOATS_ONCE

#if defined(QV_FLOATS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_FLOATS_INL_H
#undef QV_FLOATS_INL_H
#else
#define QV_FLOATS_INL_H
#endif

#include "qvclr/kernels/words-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS

struct Ints {
  IntVector at[4];
};
struct Floats {
  FloatVector at[4];
};

HWY_INLINE Ints IntsOf(const Words& words) {
  return {{LowerInts(words.lower), UpperInts(words.lower), LowerInts(words.upper), UpperInts(words.upper)}};
}
// Of integers within 16 bits.
HWY_INLINE Words WordsOf(const Ints& ints) {
  return {WordsOfInts(ints.at[0], ints.at[1]), WordsOfInts(ints.at[2], ints.at[3])};
}

HWY_INLINE FloatVector FloatOf(IntVector ints) { return hn::ConvertTo(F32(), ints); }
// Toward zero, of values within 32 bits.
HWY_INLINE IntVector WholeOf(FloatVector floats) {
#if HWY_TARGET <= HWY_AVX3
  return IntVector{_mm512_cvttps_epi32(floats.raw)};
#elif HWY_TARGET == HWY_AVX2
  return IntVector{_mm256_cvttps_epi32(floats.raw)};
#else
  return IntVector{_mm_cvttps_epi32(floats.raw)};
#endif
}
HWY_INLINE FloatVector SetFloat(double value) { return hn::Set(F32(), static_cast<float>(value)); }

HWY_INLINE Floats LookUp(const blocks::FloatTable& table, ByteVector bytes) {
#if QV_HAS_BYTE_PERMUTES
  const Words low = WordsOf(LookUp(table.bytes[0], bytes), LookUp(table.bytes[1], bytes)),
              high = WordsOf(LookUp(table.bytes[2], bytes), LookUp(table.bytes[3], bytes));
  const auto lower = [](WordVector a, WordVector b)
                         HWY_ATTR { return hn::BitCast(F32(), hn::InterleaveLower(U16(), a, b)); };
  const auto upper = [](WordVector a, WordVector b)
                         HWY_ATTR { return hn::BitCast(F32(), hn::InterleaveUpper(U16(), a, b)); };
  return {{lower(low.lower, high.lower), upper(low.lower, high.lower), lower(low.upper, high.upper),
           upper(low.upper, high.upper)}};
#else
  const Ints indices = IntsOf(WordsOf(bytes));
  Floats floats;
  for (size_t i = 0; i < 4; ++i) floats.at[i] = hn::GatherIndex(F32(), table.values.data(), indices.at[i]);
  return floats;
#endif
}

// c0 + c1 x + c2 x^2 + ...
HWY_INLINE FloatVector Polynomial(FloatVector /*x*/, double c0) { return SetFloat(c0); }
template <typename... More>
HWY_INLINE FloatVector Polynomial(FloatVector x, double c0, More... more) {
  return hn::MulAdd(x, Polynomial(x, more...), SetFloat(c0));
}

// How far from the nearest whole number, with either sign; and of magnitudes from 0.25 on, which leaves out zero.
HWY_INLINE FloatVector OffWhole(FloatVector values) {
#if HWY_TARGET <= HWY_AVX3
  return FloatVector{_mm512_reduce_ps(values.raw, 0)};
#else
  return hn::Sub(values, hn::Round(values));
#endif
}
HWY_INLINE FloatVector OffWholeButZero(FloatVector values) {
#if HWY_TARGET <= HWY_AVX3
  constexpr int kGreatestMagnitude = 0xb;
  return OffWhole(FloatVector{_mm512_range_ps(values.raw, _mm512_set1_ps(0.25f), kGreatestMagnitude)});
#else
  return OffWhole(hn::Max(hn::Abs(values), SetFloat(0.25)));
#endif
}
HWY_INLINE FloatVector LeastMagnitude(FloatVector a, FloatVector b, FloatVector c) {
#if HWY_TARGET <= HWY_AVX3
  constexpr int kLeastMagnitude = 0xa;
  return FloatVector{_mm512_range_ps(_mm512_range_ps(a.raw, b.raw, kLeastMagnitude), c.raw, kLeastMagnitude)};
#else
  return hn::Min(hn::Abs(a), hn::Min(hn::Abs(b), hn::Abs(c)));
#endif
}

// Stores the planes, but of every pixel with less clearance than `window` what the pixel function makes of it.
template <auto kPixel>
HWY_INLINE void StoreSettledPlanes(const Floats& clearance, double window, const Planes& planes, const uint8_t* src,
                                   uint8_t* dst, const RowArgs& args) {
  const auto bound = SetFloat(window);
  const FloatVector least =
      hn::Min(hn::Min(clearance.at[0], clearance.at[1]), hn::Min(clearance.at[2], clearance.at[3]));
  if (HWY_LIKELY(hn::AllTrue(F32(), hn::Ge(least, bound)))) return StorePlanes(planes, dst);

  Ints settled;
  for (size_t i = 0; i < 4; ++i) {
    settled.at[i] =
        hn::BitCast(I32(), hn::IfThenElseZero(hn::Ge(clearance.at[i], bound), hn::BitCast(F32(), hn::Set(I32(), 1))));
  }
  uint64_t in_doubt = 0;
  hn::StoreMaskBits(U8(), hn::Eq(BytesOf(WordsOf(settled)), hn::Zero(U8())), reinterpret_cast<uint8_t*>(&in_doubt));
  uint8_t exact[3 * kBlock];
  for (uint64_t rest = in_doubt; rest != 0; rest &= rest - 1) {
    const size_t pixel = static_cast<size_t>(std::countr_zero(rest));
    kPixel(src + 3 * pixel, exact + 3 * pixel, args);
  }
  StorePlanes(planes, dst);
  for (uint64_t rest = in_doubt; rest != 0; rest &= rest - 1) {
    const size_t pixel = static_cast<size_t>(std::countr_zero(rest));
    std::memcpy(dst + 3 * pixel, exact + 3 * pixel, 3);
  }
}

#endif  // QV_HAS_VECTORS

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
