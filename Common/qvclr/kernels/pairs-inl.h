// Channels of a block as 16-bit and 32-bit numbers, for the vector rows, compiled once per instruction set: bytes to
// pairs of words, their affine forms, and words back to bytes. A kernel file includes this after
// <hwy/foreach_target.h>.
#include "qvclr/kernels/blocks-inl.h"
#include "qvclr/kernels/forms.h"

// The parts that are the same for all instruction sets.
#ifndef QV_PAIRS_ONCE
#define QV_PAIRS_ONCE
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace qv::blocks {

// Which quarter of a block.
template <size_t kNumber>
using Quarter = std::integral_constant<size_t, kNumber>;

// Byte numbers of 16 pairs of words, where those of pixel `i` stand; the high bytes are to be made zero.
template <typename First, typename Second>
constexpr Order64 OrderOfPairs(First first, Second second) {
  Order64 order{};
  for (size_t i = 0; i < 16; ++i) {
    order[4 * i] = order[4 * i + 1] = static_cast<uint8_t>(first(i));
    order[4 * i + 2] = order[4 * i + 3] = static_cast<uint8_t>(second(i));
  }
  return order;
}

// Of a quarter of two planes.
template <size_t kQuarter>
struct PlaneOrders {
  alignas(64) static constexpr Order64 kPairs = OrderOfPairs([](size_t i) { return 16 * kQuarter + i; },
                                                             [](size_t i) { return 64 + 16 * kQuarter + i; });
};

// Of a quarter of pixels of three bytes, read by 64 bytes: the last quarter lies at the end of those.
template <size_t kQuarter, bool kSwapped>
struct PixelOrders {
  static constexpr size_t kOffset = kQuarter == 3 ? 128 : 48 * kQuarter, kLate = 48 * kQuarter - kOffset;
  static constexpr size_t kFirst = kSwapped ? 2 : 0, kLast = 2 - kFirst;
  static constexpr auto kLastAt = [](size_t i) { return kLate + 3 * i + kLast; };
  static constexpr auto kMiddleAt = [](size_t i) { return kLate + 3 * i + 1; };
  alignas(64) static constexpr Order64 kFirstPair = OrderOfPairs([](size_t i) { return kLate + 3 * i + kFirst; },
                                                                 kMiddleAt);
  alignas(64) static constexpr Order64 kSecondPair = OrderOfPairs(kLastAt, kMiddleAt);
  alignas(64) static constexpr Order64 kBytes = [] {  // the three channels, and one of them again
    Order64 order{};
    for (size_t i = 0; i < 64; ++i) {
      const size_t channel = i % 4 % 3;
      order[i] = static_cast<uint8_t>(kLate + i / 4 * 3 + (kSwapped ? 2 - channel : channel));
    }
    return order;
  }();
};

// Words are narrowed by fours: a vector of them has four pixels of one quarter after four of another. Where pixel
// `number` of the two stands.
constexpr size_t AmongWords(size_t number) { return number % 16 / 4 * 8 + number / 16 * 4 + number % 4; }

// Numbers of the upper words of the pairs of two quarters.
alignas(64) inline constexpr auto kHighWords = [] {
  std::array<uint16_t, 32> order{};
  for (size_t number = 0; number < 32; ++number) order[AmongWords(number)] = static_cast<uint16_t>(2 * number + 1);
  return order;
}();

// Byte numbers of the words of the last channel, the first one when swapped, of two quarters as PixelOrders has them.
template <size_t kHalf, bool kSwapped>
struct WordOrders {
  static constexpr auto kMade = [] {
    Order64 order{};
    for (size_t number = 0; number < 32; ++number) {
      const auto pair = number < 16 ? PixelOrders<2 * kHalf, kSwapped>::kSecondPair
                                    : PixelOrders<2 * kHalf + 1, kSwapped>::kSecondPair;
      order[2 * AmongWords(number)] = static_cast<uint8_t>(pair[4 * (number % 16)] + (number < 16 ? 0 : 64));
    }
    return order;
  };
  alignas(64) static constexpr Order64 kLast = kMade();
};

// Pixels of three bytes out of the bytes of such words, eight of one vector after eight of another: of the first two
// channels of pixels 0..31 or 32..63, and of the third channel of both halves.
constexpr uint8_t AmongBytes(size_t pixel, bool second_eight) {
  const size_t word = AmongWords(pixel % 32);
  return static_cast<uint8_t>(word / 8 * 16 + word % 8 + (second_eight ? 8 : 0));
}
constexpr Order64 TwoAndThirdInto(size_t part) {
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) {
    const size_t pixel = (64 * part + i) / 3, channel = (64 * part + i) % 3;
    order[i] =
        channel == 2 ? static_cast<uint8_t>(64 + AmongBytes(pixel, pixel >= 32)) : AmongBytes(pixel, channel == 1);
  }
  return order;
}
constexpr Order64 UpperTwoInto(size_t part) {  // leaves what is there of the lower two and of the third
  Order64 order{};
  for (size_t i = 0; i < 64; ++i) {
    const size_t pixel = (64 * part + i) / 3, channel = (64 * part + i) % 3;
    order[i] = static_cast<uint8_t>(channel == 2 || pixel < 32 ? i : 64 + AmongBytes(pixel, channel == 1));
  }
  return order;
}
struct PixelsOfWords {
  alignas(64) static constexpr Order64 kLow = TwoAndThirdInto(0), kMiddle = TwoAndThirdInto(1),
                                       kHigh = TwoAndThirdInto(2), kUpperIntoMiddle = UpperTwoInto(1);
};

}  // namespace qv::blocks
#endif  // QV_PAIRS_ONCE

#if defined(QV_PAIRS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PAIRS_INL_H
#undef QV_PAIRS_INL_H
#else
#define QV_PAIRS_INL_H
#endif

#if QV_HAS_VECTORS
HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

using I16Vector = hn::Vec<I16>;

// A channel of a block, in the order in which narrowing its quarters leaves it.
struct WordPlane {
  I16Vector lower, upper;
};
struct WordPlanes {
  WordPlane first, middle, last;
};

// A quarter of a block: two pairs of channels to a pixel, and what is made of them.
struct Pairs {
  I16Vector first, second;
};
struct BytePairs : Pairs {
  ByteVector bytes;  // of pixels of three bytes: these, filled up to four
};
struct Three {
  IntVector first, middle, last;
};

HWY_INLINE ByteVector ClampedBytes(const WordPlane& words) { return PackedBytes(words.lower, words.upper); }

#if QV_HAS_BYTE_PERMUTES
constexpr __mmask64 kLowBytes = 0x5555555555555555;

template <size_t kQuarter>
HWY_INLINE I16Vector PairsOf(ByteVector first, ByteVector second) {
  const __m512i order = OrderOf(blocks::PlaneOrders<kQuarter>::kPairs);
  return I16Vector{_mm512_maskz_permutex2var_epi8(kLowBytes, first.raw, order, second.raw)};
}
// Pixels of three bytes, clamped to 0..255.
HWY_INLINE void StoreWords(const WordPlanes& words, uint8_t* dst) {
  using Orders = blocks::PixelsOfWords;
  const __m512i lower = PackedBytes(words.first.lower, words.middle.lower).raw,
                upper = PackedBytes(words.first.upper, words.middle.upper).raw, third = ClampedBytes(words.last).raw;
  const __m512i middle = _mm512_permutex2var_epi8(lower, OrderOf(Orders::kMiddle), third);
  _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(lower, OrderOf(Orders::kLow), third));
  _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi8(middle, OrderOf(Orders::kUpperIntoMiddle), upper));
  _mm512_storeu_si512(dst + 128, _mm512_permutex2var_epi8(upper, OrderOf(Orders::kHigh), third));
}
#else
template <size_t kQuarter>
HWY_INLINE I16Vector PairsOf(ByteVector first, ByteVector second) {
  const ByteVector pairs =
      kQuarter < 2 ? hn::InterleaveLower(U8(), first, second) : hn::InterleaveUpper(U8(), first, second);
  const ByteVector zero = hn::Zero(U8());
  return hn::BitCast(
      I16(), kQuarter % 2 == 0 ? hn::InterleaveLower(U8(), pairs, zero) : hn::InterleaveUpper(U8(), pairs, zero));
}
HWY_INLINE void StoreWords(const WordPlanes& words, uint8_t* dst) {
  StorePlanes({ClampedBytes(words.first), ClampedBytes(words.middle), ClampedBytes(words.last)}, dst);
}
#endif

// The pixels of three planes, each the pairs (first, middle) and (last, middle).
struct PlanePairs {
  ByteVector first, middle, last;
  template <size_t kQuarter>
  HWY_INLINE I16Vector First(blocks::Quarter<kQuarter>) const {
    return PairsOf<kQuarter>(first, middle);
  }
  template <size_t kQuarter>
  HWY_INLINE I16Vector Second(blocks::Quarter<kQuarter>) const {
    return PairsOf<kQuarter>(last, middle);
  }
  template <size_t kQuarter>
  HWY_INLINE Pairs At(blocks::Quarter<kQuarter> quarter) const {
    return {First(quarter), Second(quarter)};
  }
};

// The pixels of a block likewise, or with the ends swapped; and all of the last channel.
#if QV_HAS_BYTE_PERMUTES
template <bool kSwapped>
class PixelPairs {
 public:
  explicit HWY_INLINE PixelPairs(const uint8_t* src) : src_(src) {}
  template <size_t kQuarter>
  HWY_INLINE I16Vector First(blocks::Quarter<kQuarter>) const {
    using Orders = blocks::PixelOrders<kQuarter, kSwapped>;
    return I16Vector{_mm512_maskz_permutexvar_epi8(kLowBytes, OrderOf(Orders::kFirstPair), Load<kQuarter>())};
  }
  template <size_t kQuarter>
  HWY_INLINE I16Vector Second(blocks::Quarter<kQuarter>) const {
    using Orders = blocks::PixelOrders<kQuarter, kSwapped>;
    return I16Vector{_mm512_maskz_permutexvar_epi8(kLowBytes, OrderOf(Orders::kSecondPair), Load<kQuarter>())};
  }
  template <size_t kQuarter>
  HWY_INLINE BytePairs At(blocks::Quarter<kQuarter> quarter) const {
    using Orders = blocks::PixelOrders<kQuarter, kSwapped>;
    return {{First(quarter), Second(quarter)},
            ByteVector{_mm512_permutexvar_epi8(OrderOf(Orders::kBytes), Load<kQuarter>())}};
  }
  HWY_INLINE WordPlane Last() const { return {LastOfHalf<0>(), LastOfHalf<1>()}; }

 private:
  template <size_t kQuarter>
  HWY_INLINE __m512i Load() const {
    return _mm512_loadu_si512(src_ + blocks::PixelOrders<kQuarter, kSwapped>::kOffset);
  }
  template <size_t kHalf>
  HWY_INLINE I16Vector LastOfHalf() const {
    const __m512i order = OrderOf(blocks::WordOrders<kHalf, kSwapped>::kLast);
    return I16Vector{_mm512_maskz_permutex2var_epi8(kLowBytes, Load<2 * kHalf>(), order, Load<2 * kHalf + 1>())};
  }
  const uint8_t* src_;
};
#else
template <bool kSwapped>
struct PixelPairs : PlanePairs {
  explicit HWY_INLINE PixelPairs(const uint8_t* src) : PlanePairs(InOrder(LoadPlanes(src))) {}
  HWY_INLINE WordPlane Last() const {
    return {hn::BitCast(I16(), hn::InterleaveLower(U8(), last, hn::Zero(U8()))),
            hn::BitCast(I16(), hn::InterleaveUpper(U8(), last, hn::Zero(U8())))};
  }

 private:
  static HWY_INLINE PlanePairs InOrder(const Planes& planes) {
    return kSwapped ? PlanePairs{planes.last, planes.middle, planes.first}
                    : PlanePairs{planes.first, planes.middle, planes.last};
  }
};
#endif

// Two quarters as words: clamped, or their upper words.
template <bool kInHighWords = false>
HWY_INLINE I16Vector Narrow(IntVector a, IntVector b) {
  if constexpr (!kInHighWords) return hn::ReorderDemote2To(I16(), a, b);
#if QV_HAS_BYTE_PERMUTES
  return I16Vector{_mm512_permutex2var_epi16(a.raw, _mm512_load_si512(blocks::kHighWords.data()), b.raw)};
#else
  return hn::ReorderDemote2To(I16(), hn::ShiftRight<16>(a), hn::ShiftRight<16>(b));
#endif
}

template <bool kSwapped>
HWY_INLINE void StoreWordsInOrder(WordPlanes words, uint8_t* dst) {
  if (kSwapped) std::swap(words.first, words.last);
  StoreWords(words, dst);
}

HWY_INLINE WordPlane LowBytes(const WordPlane& words) {
  const I16Vector low = hn::Set(I16(), 0xFF);
  return {hn::And(words.lower, low), hn::And(words.upper, low)};
}

// The result of row(swapped), compiled for either order of the RGB side.
template <typename Row>
HWY_INLINE Status InRgbOrder(const RowArgs& args, Row&& row) {
  return args.rgb_first ? row(std::false_type()) : row(std::true_type());
}

// A block by the quarters that make it up.
template <bool kInHighWords = false, typename OfQuarter>
HWY_INLINE WordPlanes ByQuarters(OfQuarter&& quarter) {
  WordPlanes rows;
  const Three a = quarter(blocks::Quarter<0>()), b = quarter(blocks::Quarter<1>());
  rows.first.lower = Narrow<kInHighWords>(a.first, b.first);
  rows.middle.lower = Narrow<kInHighWords>(a.middle, b.middle);
  rows.last.lower = Narrow<kInHighWords>(a.last, b.last);
  const Three c = quarter(blocks::Quarter<2>()), d = quarter(blocks::Quarter<3>());
  rows.first.upper = Narrow<kInHighWords>(c.first, d.first);
  rows.middle.upper = Narrow<kInHighWords>(c.middle, d.middle);
  rows.last.upper = Narrow<kInHighWords>(c.last, d.last);
  return rows;
}

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // QV_HAS_VECTORS
#endif  // per target
