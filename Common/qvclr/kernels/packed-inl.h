// Blocks of the packed video layouts, compiled once per instruction set. A kernel file includes this after
// <hwy/foreach_target.h>.
#include "qvclr/kernels/studio-inl.h"

// The parts that are the same for all instruction sets.
#ifndef QV_PACKED_ONCE
#define QV_PACKED_ONCE
#include <cstring>

#include "qvclr/kernels/packed_layouts.h"

namespace qv::blocks {

// Groups are made of words of luma whose high bytes carry the chroma: U stands with the first pixel that shares it, V
// half of them later. Byte `at` of a row of groups, in the words of its pixels.
constexpr size_t InWords(const Layout& layout, size_t at) {
  const size_t first = at / layout.bytes * layout.pixels;
  for (size_t x = first; x < first + layout.pixels; ++x) {
    if (LumaAt(layout, x) == at) return 2 * x;
    if (x % layout.sharing == 0 && UAt(layout, x) == at) return 2 * x + 1;
    if (x % layout.sharing == 0 && VAt(layout, x) == at) return 2 * x + layout.sharing + 1;
  }
  return 0;
}

// A block of 64 pixels, in two vectors of which the second one ends with the block.
template <const Layout& kLayout>
struct PackedOrders {
  static constexpr size_t kBytes = BytesOf(kLayout, 64), kSecond = kBytes - 64;
  static constexpr size_t Number(size_t at) { return at < 64 ? at : 64 + at - kSecond; }

  template <size_t kQuarter>
  struct In {
    static constexpr auto kUsed = [](auto at) {
      return [at](size_t i) { return Number(at(kLayout, 16 * kQuarter + i)); };
    };
    alignas(64) static constexpr Order64 kYu = OrderOfPairs(kUsed(LumaAt), kUsed(UAt));
    alignas(64) static constexpr Order64 kV = OrderOfPairs(kUsed(VAt), kUsed(VAt));
  };
  // The lower half makes the first `kHalf` bytes, the upper half those after them.
  static constexpr size_t kHalf = kBytes / 2;
  alignas(64) static constexpr Order64 kOut = [] {
    Order64 order{};
    for (size_t i = 0; i < kHalf; ++i) {
      const size_t byte = InWords(kLayout, i);
      order[i] = static_cast<uint8_t>(2 * AmongWords(byte / 2) + byte % 2);
    }
    return order;
  }();
};

// Of 16 bytes of a plane, those that the first or the second 16 bytes of its pixels hold, 128 for others; and the bytes
// of eight pixels' groups.
using Order16 = std::array<uint8_t, 16>;
template <const Layout& kLayout>
struct PackedLaneOrders {
  static constexpr size_t kBytes = BytesOf(kLayout, 16), kSecond = kBytes - 16;
  static constexpr Order16 Of(size_t (*at)(const Layout&, size_t), bool second) {
    Order16 order{};
    for (size_t i = 0; i < 16; ++i) {
      const size_t byte = at(kLayout, i);
      order[i] = static_cast<uint8_t>((byte >= 16) != second ? 128 : second ? byte - kSecond : byte);
    }
    return order;
  }
  alignas(16) static constexpr Order16 kFirstY = Of(LumaAt, false), kSecondY = Of(LumaAt, true),
                                       kFirstU = Of(UAt, false), kSecondU = Of(UAt, true), kFirstV = Of(VAt, false),
                                       kSecondV = Of(VAt, true);
  alignas(16) static constexpr Order16 kGroups = [] {
    Order16 order{};
    for (size_t i = 0; i < BytesOf(kLayout, 8); ++i) order[i] = static_cast<uint8_t>(InWords(kLayout, i));
    return order;
  }();
};

}  // namespace qv::blocks
#endif  // QV_PACKED_ONCE

#if defined(QV_PACKED_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PACKED_INL_H
#undef QV_PACKED_INL_H
#else
#define QV_PACKED_INL_H
#endif

#if QV_HAS_VECTORS
HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_BYTE_PERMUTES
// The pairs (Y, U) and (V, V) of a block.
template <const Layout& kLayout>
class PackedPairs {
 public:
  explicit HWY_INLINE PackedPairs(const uint8_t* src)
      : first_(_mm512_loadu_si512(src)), second_(_mm512_loadu_si512(src + Orders::kSecond)) {}
  template <size_t kQuarter>
  HWY_INLINE Pairs At(blocks::Quarter<kQuarter>) const {
    using In = typename Orders::template In<kQuarter>;
    return {Pick<In::kYu>(), Pick<In::kV>()};
  }

 private:
  using Orders = blocks::PackedOrders<kLayout>;
  template <const blocks::Order64& kOrder>
  HWY_INLINE I16Vector Pick() const {
    constexpr auto kInFirst = [](uint8_t at) { return at < 64; };
    if constexpr (std::ranges::all_of(kOrder, kInFirst)) {
      return I16Vector{_mm512_maskz_permutexvar_epi8(kLowBytes, OrderOf(kOrder), first_)};
    } else if constexpr (std::ranges::none_of(kOrder, kInFirst)) {
      return I16Vector{_mm512_maskz_permutexvar_epi8(kLowBytes, OrderOf(kOrder), second_)};
    } else {
      return I16Vector{_mm512_maskz_permutex2var_epi8(kLowBytes, first_, OrderOf(kOrder), second_)};
    }
  }
  __m512i first_, second_;
};

template <const Layout& kLayout>
HWY_INLINE void StoreGroups(I16Vector lower, I16Vector upper, uint8_t* dst) {
  using Orders = blocks::PackedOrders<kLayout>;
  const __m512i order = OrderOf(Orders::kOut), low = _mm512_permutexvar_epi8(order, lower.raw),
                high = _mm512_permutexvar_epi8(order, upper.raw);
  if constexpr (Orders::kHalf == 64) {
    _mm512_storeu_si512(dst, low);
    _mm512_storeu_si512(dst + 64, high);
  } else {
    static_assert(Orders::kHalf == 48);
    _mm512_storeu_si512(dst, low);  // 16 bytes too many, which the upper half covers
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 48), _mm512_castsi512_si256(high));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 80), _mm512_extracti32x4_epi32(high, 2));
  }
}
#else
template <const Layout& kLayout>
struct PackedPairs : PlanePairs {
  explicit HWY_INLINE PackedPairs(const uint8_t* src) : PlanePairs(PlanesAt(src)) {}

 private:
  using Orders = blocks::PackedLaneOrders<kLayout>;
  static HWY_INLINE PlanePairs PlanesAt(const uint8_t* src) {
    const ByteVector first = LoadPieces(U8(), src, Orders::kBytes),
                     second = LoadPieces(U8(), src + Orders::kSecond, Orders::kBytes);
    const auto plane = [&](const blocks::Order16& of_first, const blocks::Order16& of_second) HWY_ATTR {
      return hn::Or(hn::TableLookupBytesOr0(first, hn::LoadDup128(U8(), of_first.data())),
                    hn::TableLookupBytesOr0(second, hn::LoadDup128(U8(), of_second.data())));
    };
    return PlanePairs{plane(Orders::kFirstY, Orders::kSecondY), plane(Orders::kFirstU, Orders::kSecondU),
                      plane(Orders::kFirstV, Orders::kSecondV)};
  }
};

template <const Layout& kLayout>
HWY_INLINE void StoreGroups(I16Vector lower, I16Vector upper, uint8_t* dst) {
  constexpr size_t kBytes = BytesOf(kLayout, 8);
  const ByteVector order = hn::LoadDup128(U8(), blocks::PackedLaneOrders<kLayout>::kGroups.data());
  uint8_t pieces[2][kBlock];
  hn::StoreU(hn::TableLookupBytes(hn::BitCast(U8(), lower), order), U8(), pieces[0]);
  hn::StoreU(hn::TableLookupBytes(hn::BitCast(U8(), upper), order), U8(), pieces[1]);
  for (size_t at = 0; at < kBlock; at += 16, dst += 2 * kBytes) {
    std::memcpy(dst, &pieces[0][at], kBytes);
    std::memcpy(dst + kBytes, &pieces[1][at], kBytes);
  }
}
#endif

// Luma with the means of the chroma of the pixels that share it, rounded down, in the high bytes.
template <const Layout& kLayout>
HWY_INLINE I16Vector WithChroma(I16Vector y, I16Vector u, I16Vector v) {
  const I32 d;
  const IntVector luma = hn::BitCast(d, y), second_byte = hn::Set(d, 0xFF00);
  if constexpr (kLayout.sharing == 2) {
    const IntVector of_u = SumsOfTwo<128>(u), of_v = SumsOfTwo<128>(v);
    const IntVector with_u = hn::OrAnd(luma, of_u, second_byte);
    return hn::BitCast(I16(), hn::OrAnd(with_u, hn::ShiftLeft<16>(of_v), hn::ShiftLeft<16>(second_byte)));
  } else {
    return hn::BitCast(I16(), hn::OrAnd(luma, hn::ShiftLeft<6>(SumsOfFour(u, v)), second_byte));
  }
}

template <const Layout& kLayout>
HWY_INLINE void StorePacked(const WordPlanes& yuv, uint8_t* dst) {
  StoreGroups<kLayout>(WithChroma<kLayout>(yuv.first.lower, yuv.middle.lower, yuv.last.lower),
                       WithChroma<kLayout>(yuv.first.upper, yuv.middle.upper, yuv.last.upper), dst);
}

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // QV_HAS_VECTORS
#endif  // per target
