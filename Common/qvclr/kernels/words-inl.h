// Vectors of bytes as two vectors of 16-bit words, and integer quotients of these. The words of every 16-byte block of
// the bytes are the same block of both vectors, as unpack and pack instructions have it.

#ifndef QV_WORDS_ONCE
#define QV_WORDS_ONCE
#include <array>
#include <cstddef>
#include <cstdint>

namespace qv::blocks {

// 65536 / divisor in two tables of bytes. One stands for 65535 / 1.
struct ReciprocalBytes {
  std::array<uint8_t, 256> low{}, high{};
};
alignas(64) inline constexpr ReciprocalBytes kReciprocals = [] {
  ReciprocalBytes made;
  for (uint32_t divisor = 1; divisor < 256; ++divisor) {
    const uint32_t reciprocal = divisor == 1 ? 65535 : 65536 / divisor;
    made.low[divisor] = static_cast<uint8_t>(reciprocal);
    made.high[divisor] = static_cast<uint8_t>(reciprocal >> 8);
  }
  return made;
}();

}  // namespace qv::blocks
#endif  // QV_WORDS_ONCE

#if defined(QV_WORDS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_WORDS_INL_H
#undef QV_WORDS_INL_H
#else
#define QV_WORDS_INL_H
#endif

#include "qvclr/kernels/blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS

struct Words {
  WordVector lower, upper;
};

// The words low + 256 high.
HWY_INLINE Words WordsOf(ByteVector low, ByteVector high) {
  return {hn::BitCast(U16(), hn::InterleaveLower(U8(), low, high)),
          hn::BitCast(U16(), hn::InterleaveUpper(U8(), low, high))};
}
HWY_INLINE Words WordsOf(ByteVector bytes) { return WordsOf(bytes, hn::Zero(U8())); }

template <typename Function, typename... More>
HWY_INLINE Words ForWords(Function&& function, const Words& first, const More&... more) {
  return {function(first.lower, more.lower...), function(first.upper, more.upper...)};
}

// A quarter of two channels, in pairs.
template <size_t kQuarter>
HWY_INLINE hn::Vec<I16> PairsOfWords(const Words& first, const Words& second) {
  const WordVector a = kQuarter < 2 ? first.lower : first.upper, b = kQuarter < 2 ? second.lower : second.upper;
  return hn::BitCast(I16(), kQuarter % 2 == 0 ? hn::InterleaveLower(U16(), a, b) : hn::InterleaveUpper(U16(), a, b));
}

// Words up to 32767, those above 255 as 255.
HWY_INLINE ByteVector BytesOf(const Words& words) { return PackedBytes(words.lower, words.upper); }
HWY_INLINE ByteVector LowBytesOf(const Words& words) {
  const auto low = hn::Set(U16(), uint16_t{255});
  return BytesOf({hn::And(words.lower, low), hn::And(words.upper, low)});
}

// Of both bytes of a word, each times its factor of up to 127, the sum.
HWY_INLINE WordVector PairSums(WordVector pairs, WordVector factors) {
#if HWY_TARGET <= HWY_AVX3
  return WordVector{_mm512_maddubs_epi16(pairs.raw, factors.raw)};
#elif HWY_TARGET == HWY_AVX2
  return WordVector{_mm256_maddubs_epi16(pairs.raw, factors.raw)};
#else
  return WordVector{_mm_maddubs_epi16(pairs.raw, factors.raw)};
#endif
}
template <uint8_t kFirst, uint8_t kSecond>
HWY_INLINE Words WeightedSums(ByteVector first, ByteVector second) {
  static_assert(kFirst < 128 && kSecond < 128);
  const Words pairs = WordsOf(first, second);
  const auto factors = hn::Set(U16(), static_cast<uint16_t>(kFirst + 256 * kSecond));
  return {PairSums(pairs.lower, factors), PairSums(pairs.upper, factors)};
}

HWY_INLINE WordVector TimesOver65536(WordVector words, uint32_t factor) {
  return hn::MulHigh(words, hn::Set(U16(), static_cast<uint16_t>(factor)));
}
// Of any word but 65535.
HWY_INLINE WordVector Over255(WordVector words) { return hn::ShiftRight<7>(TimesOver65536(words, 0x8081)); }

using ByteMask = hn::Mask<U8>;
HWY_INLINE ByteMask AtLeast(ByteVector bytes, ByteVector bounds) { return hn::Eq(hn::Max(bytes, bounds), bytes); }
HWY_INLINE ByteMask AtLeast(ByteVector bytes, uint8_t bound) { return AtLeast(bytes, hn::Set(U8(), bound)); }

// Divisors for quotients of zero by zero, which are zero.
HWY_INLINE ByteVector NotZero(ByteVector bytes) { return hn::Max(bytes, hn::Set(U8(), uint8_t{1})); }

HWY_INLINE ByteVector Distance(ByteVector a, ByteVector b) {
  return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}

// Four vectors of 32-bit integers for the words of a byte vector, and back (values up to 32767).
HWY_INLINE IntVector LowerInts(WordVector words) {
  return hn::BitCast(I32(), hn::InterleaveLower(U16(), words, hn::Zero(U16())));
}
HWY_INLINE IntVector UpperInts(WordVector words) {
  return hn::BitCast(I32(), hn::InterleaveUpper(U16(), words, hn::Zero(U16())));
}
HWY_INLINE WordVector WordsOfInts(IntVector lower, IntVector upper) {
  return hn::BitCast(U16(), hn::ReorderDemote2To(I16(), lower, upper));
}

#if QV_HAS_BYTE_PERMUTES
// table[bytes[i]]
HWY_INLINE ByteVector LookUp(const std::array<uint8_t, 256>& table, ByteVector bytes) {
  const __m512i first = _mm512_loadu_si512(table.data()), second = _mm512_loadu_si512(table.data() + 64),
                third = _mm512_loadu_si512(table.data() + 128), fourth = _mm512_loadu_si512(table.data() + 192);
  const __m512i below_128 = _mm512_permutex2var_epi8(first, bytes.raw, second),
                from_128 = _mm512_permutex2var_epi8(third, bytes.raw, fourth);
  return ByteVector{_mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes.raw), below_128, from_128)};
}

// Quotients, rounded down, by divisors from 1 on, of words whose quotients are at most 255. What the truncated
// reciprocal gives is at most one too small.
class Divisors {
 public:
  explicit HWY_INLINE Divisors(ByteVector divisors)
      : divisors_(WordsOf(divisors)),
        reciprocals_(WordsOf(LookUp(blocks::kReciprocals.low, divisors), LookUp(blocks::kReciprocals.high, divisors))) {
  }
  HWY_INLINE Words Into(const Words& numerators) const {
    return ForWords(
        [](WordVector numerator, WordVector divisor, WordVector reciprocal) HWY_ATTR {
          const WordVector quotient = hn::MulHigh(numerator, reciprocal);
          const WordVector rest = hn::Sub(numerator, hn::Mul(quotient, divisor));
          return WordVector{_mm512_mask_add_epi16(quotient.raw, _mm512_cmpge_epu16_mask(rest.raw, divisor.raw),
                                                  quotient.raw, _mm512_set1_epi16(1))};
        },
        numerators, divisors_, reciprocals_);
  }

 private:
  Words divisors_, reciprocals_;
};
#else
HWY_INLINE ByteVector LookUp(const std::array<uint8_t, 256>& table, ByteVector bytes) {
  HWY_ALIGN uint8_t lanes[kBlock];
  hn::Store(bytes, U8(), lanes);
  for (uint8_t& lane : lanes) lane = table[lane];
  return hn::Load(U8(), lanes);
}

// Half a unit more than the numerator keeps whole quotients clear of the rounding.
class Divisors {
 public:
  explicit HWY_INLINE Divisors(ByteVector divisors) {
    const Words words = WordsOf(divisors);
    lower_ = Reciprocals(words.lower);
    upper_ = Reciprocals(words.upper);
  }
  HWY_INLINE Words Into(const Words& numerators) const {
    return {Quotients(numerators.lower, lower_), Quotients(numerators.upper, upper_)};
  }

 private:
  struct Floats {
    FloatVector lower, upper;
  };
  static HWY_INLINE Floats Reciprocals(WordVector words) {
    const auto one = hn::Set(F32(), 1.0f);
    return {hn::Div(one, hn::ConvertTo(F32(), LowerInts(words))), hn::Div(one, hn::ConvertTo(F32(), UpperInts(words)))};
  }
  static HWY_INLINE IntVector Quotient(IntVector numerator, FloatVector reciprocal) {
    return hn::ConvertTo(I32(), hn::Mul(hn::Add(hn::ConvertTo(F32(), numerator), hn::Set(F32(), 0.5f)), reciprocal));
  }
  static HWY_INLINE WordVector Quotients(WordVector words, const Floats& reciprocals) {
    return WordsOfInts(Quotient(LowerInts(words), reciprocals.lower), Quotient(UpperInts(words), reciprocals.upper));
  }
  Floats lower_, upper_;
};
#endif

#endif  // QV_HAS_VECTORS

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
