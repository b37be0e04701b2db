// Blocks of planes whose chroma is shared by 4 x 4 pixels, compiled once per instruction set. A kernel file includes
// this after <hwy/foreach_target.h>.
#include "qvclr/kernels/studio-inl.h"

// The parts that are the same for all instruction sets.
#ifndef QV_PLANAR_ONCE
#define QV_PLANAR_ONCE
#include <cstring>

namespace qv::blocks {

// Every byte four times.
alignas(64) inline constexpr Order64 kEveryFourTimes = [] {
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) order[i] = static_cast<uint8_t>(i / 4);
  return order;
}();

// Bytes of 64 pixels, and U of every four pixels, then V, out of the bytes that narrowing twice makes.
struct PlanarOrders {
  alignas(64) static constexpr Order64 kLuma = [] {
    Order64 order{};
    for (size_t i = 0; i < 64; ++i) order[i] = static_cast<uint8_t>(i % 16 / 4 * 16 + i / 16 * 4 + i % 4);
    return order;
  }();
  alignas(64) static constexpr Order64 kChroma = [] {
    Order64 order{};
    for (size_t i = 0; i < 32; ++i) order[i] = static_cast<uint8_t>(i % 4 * 16 + i % 16 / 4 * 4 + i / 16 * 2);
    return order;
  }();
};
alignas(16) inline constexpr std::array<uint8_t, 16> kChromaOfLane = {0, 4, 8, 12, 2, 6, 10, 14};

}  // namespace qv::blocks
#endif  // QV_PLANAR_ONCE

#if defined(QV_PLANAR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLANAR_INL_H
#undef QV_PLANAR_INL_H
#else
#define QV_PLANAR_INL_H
#endif

#if QV_HAS_VECTORS
HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

// A quarter of a block's bytes, each four times.
HWY_INLINE ByteVector SpreadByFour(const uint8_t* src) {
  const U8 d;
  const ByteVector order = hn::LoadU(d, blocks::kEveryFourTimes.data());
  if constexpr (kBlock == 64) {
    return hn::TableLookupBytes(hn::LoadDup128(d, src), order);
  } else {
    std::conditional_t<kBlock == 32, uint64_t, uint32_t> quarter;
    std::memcpy(&quarter, src, sizeof(quarter));
    return hn::TableLookupBytes(hn::BitCast(d, hn::Set(hn::Repartition<decltype(quarter), U8>(), quarter)), order);
  }
}

HWY_INLINE void StoreBytes(const WordPlane& words, uint8_t* dst) {
#if QV_HAS_BYTE_PERMUTES
  const ByteVector bytes = ClampedBytes(words);
  _mm512_storeu_si512(dst, _mm512_permutexvar_epi8(OrderOf(blocks::PlanarOrders::kLuma), bytes.raw));
#else
  hn::StoreU(ClampedBytes(words), U8(), dst);
#endif
}

// The chroma samples of a block and its four rows.
class ChromaOfBlock {
 public:
  explicit HWY_INLINE ChromaOfBlock(const WordPlanes& first_row)
      : lower_(hn::ShiftRight<2>(SumsOfFour(first_row.middle.lower, first_row.last.lower))),
        upper_(hn::ShiftRight<2>(SumsOfFour(first_row.middle.upper, first_row.last.upper))) {}
  HWY_INLINE void Blend(const WordPlanes& yuv) {
    lower_ = Fifth(hn::Add(lower_, SumsOfFour(yuv.middle.lower, yuv.last.lower)));
    upper_ = Fifth(hn::Add(upper_, SumsOfFour(yuv.middle.upper, yuv.last.upper)));
  }
  HWY_INLINE void Store(uint8_t* u, uint8_t* v) const {
    const ByteVector samples = hn::BitCast(U8(), Narrow(lower_, upper_));
#if QV_HAS_BYTE_PERMUTES
    const __m512i bytes = _mm512_permutexvar_epi8(OrderOf(blocks::PlanarOrders::kChroma), samples.raw);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(u), _mm512_castsi512_si128(bytes));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(v), _mm512_extracti32x4_epi32(bytes, 1));
#else
    uint8_t lanes[kBlock];
    hn::StoreU(hn::TableLookupBytes(samples, hn::LoadDup128(U8(), blocks::kChromaOfLane.data())), U8(), lanes);
    for (size_t at = 0; at < kBlock; at += 16, u += 4, v += 4) {
      std::memcpy(u, &lanes[at], 4);
      std::memcpy(v, &lanes[at + 4], 4);
    }
#endif
  }

 private:
  // Rounded down, of at most five bytes' sum.
  static HWY_INLINE IntVector Fifth(IntVector sums) {
    return hn::BitCast(I32(), hn::MulHigh(hn::BitCast(I16(), sums), hn::Set(I16(), int16_t{13108})));
  }
  IntVector lower_, upper_;
};

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // QV_HAS_VECTORS
#endif  // per target
