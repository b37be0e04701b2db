// Pixels of four bytes as one vector a channel, and the planes of three-byte pixels that go with them: both in an order
// that takes the four bytes apart, and joins them, within blocks of 16 bytes.

#ifndef QV_INKS_ONCE
#define QV_INKS_ONCE
#include "qvclr/kernels/blocks-inl.h"

namespace qv::blocks {

// The pixel of 64 whose bytes stand at `i` of the planes; its own inverse.
constexpr size_t InkPixel(size_t i) { return 16 * (i / 4 % 4) + 4 * (i / 16) + i % 4; }

// As Orders, in the order of the inks.
template <size_t kNumber>
struct InkOrders {
  static constexpr Order64 Planes(const Order64& natural) {
    Order64 order{};
    for (size_t i = 0; i < 64; ++i) order[i] = natural[InkPixel(i)];
    return order;
  }
  // A channel of the first two vectors, then joined with the third; the bytes at `i` stay.
  static constexpr Order64 Joined(const Order64& natural) {
    Order64 order{};
    for (size_t i = 0; i < 64; ++i) {
      const uint8_t from = natural[InkPixel(i)];
      order[i] = static_cast<uint8_t>(from < 64 ? i : from);
    }
    return order;
  }
  static constexpr Order64 Into(const Order64& natural, bool both_are_planes) {
    Order64 order{};
    for (size_t i = 0; i < 64; ++i) {
      const bool of_first = natural[i] < 64;
      const size_t at = InkPixel(natural[i] % 64) + (of_first ? 0 : 64);
      order[i] = static_cast<uint8_t>(of_first && !both_are_planes ? i : at);
    }
    return order;
  }
  alignas(64) static constexpr Order64 kFromFirstTwo = Planes(FromFirstTwo(kNumber)),
                                       kFromThird = Joined(FromThird(kNumber)),
                                       kFirstTwoInto = Into(FirstTwoInto(kNumber), true),
                                       kThirdInto = Into(ThirdInto(kNumber), false);
};

}  // namespace qv::blocks
#endif  // QV_INKS_ONCE

#if defined(QV_INKS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_INKS_INL_H
#undef QV_INKS_INL_H
#else
#define QV_INKS_INL_H
#endif

#include "qvclr/kernels/blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

struct InkPlanes {
  ByteVector c, m, y, k;
};

#if QV_HAS_BYTE_PERMUTES
// The steps of a transposition within blocks: of pairs of vectors the lower and upper elements in turn.
template <typename D>
HWY_INLINE void Interleave(D d, ByteVector& a, ByteVector& b) {
  const auto first = hn::BitCast(d, a), second = hn::BitCast(d, b);
  a = hn::BitCast(U8(), hn::InterleaveLower(d, first, second));
  b = hn::BitCast(U8(), hn::InterleaveUpper(d, first, second));
}

HWY_INLINE InkPlanes LoadInks(const uint8_t* src) {
  alignas(16) static constexpr uint8_t kByChannel[] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
  const auto by_channel = hn::LoadDup128(U8(), kByChannel);
  const auto load = [&](size_t part)
                        HWY_ATTR { return hn::TableLookupBytes(hn::LoadU(U8(), src + 64 * part), by_channel); };
  ByteVector a = load(0), b = load(1), c = load(2), d = load(3);
  Interleave(U32(), a, b);  // channels 0 and 1 of the first half of the pixels, 2 and 3
  Interleave(U32(), c, d);
  Interleave(hn::Repartition<uint64_t, U8>(), a, c);
  Interleave(hn::Repartition<uint64_t, U8>(), b, d);
  return {a, c, b, d};
}
HWY_INLINE void StoreInks(const InkPlanes& planes, uint8_t* dst) {
  auto [c, m, y, k] = planes;
  Interleave(U8(), c, m);
  Interleave(U8(), y, k);
  Interleave(U16(), c, y);
  Interleave(U16(), m, k);
  hn::StoreU(c, U8(), dst);
  hn::StoreU(y, U8(), dst + 64);
  hn::StoreU(m, U8(), dst + 128);
  hn::StoreU(k, U8(), dst + 192);
}
#else
HWY_INLINE InkPlanes LoadInks(const uint8_t* src) {
  InkPlanes planes;
  hn::LoadInterleaved4(U8(), src, planes.c, planes.m, planes.y, planes.k);
  return planes;
}
HWY_INLINE void StoreInks(const InkPlanes& planes, uint8_t* dst) {
  hn::StoreInterleaved4(planes.c, planes.m, planes.y, planes.k, U8(), dst);
}
#endif

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
