// What the vector rows share, compiled once per instruction set: pixels taken apart into one vector a channel and put
// together again, and the loop over them. A kernel file includes this after <hwy/foreach_target.h>.

// The parts that are the same for all instruction sets.
#ifndef QV_BLOCKS_ONCE
#define QV_BLOCKS_ONCE
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "qvclr/kernels/pixel.h"

namespace qv::blocks {

// Byte numbers for a permutation of two vectors of 64 bytes, the second one from 64 on.
using Order64 = std::array<uint8_t, 64>;

// Channel `channel` of 64 pixels of three bytes: what the first two vectors hold of it, then that joined with the
// third.
constexpr Order64 FromFirstTwo(size_t channel) {
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) order[i] = static_cast<uint8_t>((3 * i + channel) % 128);
  return order;
}
constexpr Order64 FromThird(size_t channel) {
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) {
    const size_t at = 3 * i + channel;
    order[i] = static_cast<uint8_t>(at < 128 ? i : at - 64);
  }
  return order;
}

// Vector `part` of the three: the first two channels in their places, then the third between them.
constexpr Order64 FirstTwoInto(size_t part) {
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) {
    const size_t at = 64 * part + i;
    order[i] = static_cast<uint8_t>(at / 3 + (at % 3 == 1 ? 64 : 0));
  }
  return order;
}
constexpr Order64 ThirdInto(size_t part) {
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) {
    const size_t at = 64 * part + i;
    order[i] = static_cast<uint8_t>(at % 3 == 2 ? 64 + at / 3 : i);
  }
  return order;
}

template <size_t kNumber>
struct Orders {
  alignas(64) static constexpr Order64 kFromFirstTwo = FromFirstTwo(kNumber), kFromThird = FromThird(kNumber),
                                       kFirstTwoInto = FirstTwoInto(kNumber), kThirdInto = ThirdInto(kNumber);
};

}  // namespace qv::blocks

// The row of the best instruction set that this processor has.
#define QV_ROW_OF_THIS_CPU(Row)                                                                \
  HWY_EXPORT(Row);                                                                             \
  Status Row##OfThisCpu(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) { \
    return HWY_DYNAMIC_DISPATCH(Row)(src, dst, width, args);                                   \
  }

// The kernel of such a row, which is named after it.
#define QV_PIXEL_KERNEL(Name, src_bytes, dst_bytes) \
  namespace {                                       \
  QV_ROW_OF_THIS_CPU(Name##Row)                     \
  }                                                 \
  const Kernel Name = {#Name, Name##RowOfThisCpu, src_bytes, dst_bytes};
#endif  // QV_BLOCKS_ONCE

#include <hwy/highway.h>

#if defined(QV_BLOCKS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_BLOCKS_INL_H
#undef QV_BLOCKS_INL_H
#else
#define QV_BLOCKS_INL_H
#endif

// The scalar target is served by the pixel functions themselves.
#undef QV_HAS_VECTORS
#undef QV_HAS_BYTE_PERMUTES
#define QV_HAS_VECTORS (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128)
#define QV_HAS_BYTE_PERMUTES (HWY_TARGET == HWY_AVX3_DL)

// This target is only chosen where the processor has the dot products of 512-bit vectors, but does not name them.
// It names AVX-VNNI, which such a processor may lack: loops over products that a compiler would make use of it for
// stand outside of the target.
#if QV_HAS_BYTE_PERMUTES
#undef HWY_TARGET_STR
#define HWY_TARGET_STR \
  HWY_TARGET_STR_AVX3 ",vpclmulqdq,avx512vbmi,avx512vbmi2,vaes,avxvnni,avx512vnni,avx512bitalg,avx512vpopcntdq"
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using U8 = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<U8>;
constexpr size_t kBlock = hn::MaxLanes(U8());  // pixels that a block converts

// Where the word of pixel `number` stands, of words that unpacking the lower eights and then the upper eights of every
// sixteen bytes leaves.
constexpr size_t WordAt(size_t number) { return number % 16 / 8 * (kBlock / 2) + number / 16 * 8 + number % 8; }

#if QV_HAS_VECTORS
using U16 = hn::Repartition<uint16_t, U8>;
using I16 = hn::Repartition<int16_t, U8>;
using U32 = hn::Repartition<uint32_t, U8>;
using I32 = hn::Repartition<int32_t, U8>;
using F32 = hn::Repartition<float, U8>;
using F64 = hn::Repartition<double, U8>;
using WordVector = hn::Vec<U16>;
using IntVector = hn::Vec<I32>;
using FloatVector = hn::Vec<F32>;
using DoubleVector = hn::Vec<F64>;

// Signed words clamped to bytes: in every 16 bytes those of `lower`, then those of `upper`.
template <typename Vector>
HWY_INLINE ByteVector PackedBytes(Vector lower, Vector upper) {
#if HWY_TARGET <= HWY_AVX3
  return ByteVector{_mm512_packus_epi16(lower.raw, upper.raw)};
#elif HWY_TARGET == HWY_AVX2
  return ByteVector{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
  return ByteVector{_mm_packus_epi16(lower.raw, upper.raw)};
#endif
}

// Pieces of 16 bytes, each `step` after the one before.
template <typename D>
HWY_INLINE hn::Vec<D> LoadPieces(D d, const uint8_t* src, size_t step) {
  if constexpr (hn::MaxLanes(D()) == 16) {
    return hn::LoadU(d, src);
  } else {
    const hn::Half<D> half;
    return hn::Combine(d, LoadPieces(half, src + hn::MaxLanes(half) / 16 * step, step), LoadPieces(half, src, step));
  }
}
template <typename D>
HWY_INLINE void StorePieces(D d, hn::Vec<D> pieces, uint8_t* dst, size_t step) {
  if constexpr (hn::MaxLanes(D()) == 16) {
    hn::StoreU(pieces, d, dst);
  } else {
    const hn::Half<D> half;
    StorePieces(half, hn::LowerHalf(half, pieces), dst, step);
    StorePieces(half, hn::UpperHalf(half, pieces), dst + hn::MaxLanes(half) / 16 * step, step);
  }
}
#endif

struct Planes {
  ByteVector first, middle, last;
};
struct RgbPlanes {
  ByteVector r, g, b;
};

#if QV_HAS_BYTE_PERMUTES
HWY_INLINE __m512i OrderOf(const blocks::Order64& order) { return _mm512_load_si512(order.data()); }

template <typename Orders>
HWY_INLINE ByteVector TakeChannel(__m512i first, __m512i second, __m512i third) {
  const __m512i of_two = _mm512_permutex2var_epi8(first, OrderOf(Orders::kFromFirstTwo), second);
  return ByteVector{_mm512_permutex2var_epi8(of_two, OrderOf(Orders::kFromThird), third)};
}
template <template <size_t> typename Orders = blocks::Orders>
HWY_INLINE Planes LoadPlanes(const uint8_t* src) {
  const __m512i first = _mm512_loadu_si512(src), second = _mm512_loadu_si512(src + 64),
                third = _mm512_loadu_si512(src + 128);
  return {TakeChannel<Orders<0>>(first, second, third), TakeChannel<Orders<1>>(first, second, third),
          TakeChannel<Orders<2>>(first, second, third)};
}

template <typename Orders>
HWY_INLINE void StorePart(const Planes& planes, uint8_t* dst) {
  const __m512i two = _mm512_permutex2var_epi8(planes.first.raw, OrderOf(Orders::kFirstTwoInto), planes.middle.raw);
  _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(two, OrderOf(Orders::kThirdInto), planes.last.raw));
}
template <template <size_t> typename Orders = blocks::Orders>
HWY_INLINE void StorePlanes(const Planes& planes, uint8_t* dst) {
  StorePart<Orders<0>>(planes, dst);
  StorePart<Orders<1>>(planes, dst + 64);
  StorePart<Orders<2>>(planes, dst + 128);
}
#else
// kBlock pixels of three bytes.
template <template <size_t> typename = blocks::Orders>
HWY_INLINE Planes LoadPlanes(const uint8_t* src) {
  Planes planes;
  hn::LoadInterleaved3(U8(), src, planes.first, planes.middle, planes.last);
  return planes;
}
template <template <size_t> typename = blocks::Orders>
HWY_INLINE void StorePlanes(const Planes& planes, uint8_t* dst) {
  hn::StoreInterleaved3(planes.first, planes.middle, planes.last, U8(), dst);
}
#endif

template <template <size_t> typename Orders = blocks::Orders>
HWY_INLINE RgbPlanes LoadRgbPlanes(const uint8_t* src, const RowArgs& args) {
  const Planes planes = LoadPlanes<Orders>(src);
  return args.rgb_first ? RgbPlanes{planes.first, planes.middle, planes.last}
                        : RgbPlanes{planes.last, planes.middle, planes.first};
}
HWY_INLINE Planes InByteOrder(const RgbPlanes& rgb, const RowArgs& args) {
  return args.rgb_first ? Planes{rgb.r, rgb.g, rgb.b} : Planes{rgb.b, rgb.g, rgb.r};
}
template <template <size_t> typename Orders = blocks::Orders>
HWY_INLINE void StoreRgbPlanes(const RgbPlanes& rgb, uint8_t* dst, const RowArgs& args) {
  StorePlanes<Orders>(InByteOrder(rgb, args), dst);
}

// A row by blocks of kPixels pixels, block(src, dst) each, which loads all that it reads before it stores; what is left
// pixel by pixel.
template <auto kPixel, size_t kSrcBytes, size_t kDstBytes, size_t kPixels = kBlock, typename Block>
HWY_INLINE Status BlockRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args, Block&& block) {
#if QV_HAS_VECTORS
  for (; width >= kPixels; width -= kPixels, src += kPixels * kSrcBytes, dst += kPixels * kDstBytes) block(src, dst);
#else
  static_cast<void>(block);
#endif
  return ScalarRow<kPixel, kSrcBytes, kDstBytes>(src, dst, width, args);
}

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
