// Pixels of three bytes with their bytes in the opposite order, complemented or not; compiled once per instruction set.

// The parts that are the same for all instruction sets.
#ifndef QV_REVERSE_ONCE
#define QV_REVERSE_ONCE
#include <array>
#include <cstddef>
#include <cstdint>

namespace qv::reverse {

// Where byte `at` of reversed pixels comes from.
constexpr size_t SourceOf(size_t at) { return at / 3 * 3 + 2 - at % 3; }

// For a block of three vectors of 16 bytes: what vector `part` of the result takes from vector `input`; 0x80 where it
// takes nothing.
inline constexpr auto kTaken = [] {
  std::array<std::array<std::array<uint8_t, 16>, 3>, 3> orders{};
  for (size_t part = 0; part < 3; ++part) {
    for (size_t input = 0; input < 3; ++input) {
      for (size_t i = 0; i < 16; ++i) {
        const size_t from = SourceOf(16 * part + i);
        orders[part][input][i] = static_cast<uint8_t>(from / 16 == input ? from % 16 : 0x80);
      }
    }
  }
  return orders;
}();

// A permutation of two vectors of 64 bytes, the second one from 64 on: the bytes that `part` takes from `first` and
// `second`. Where it takes none, it keeps the byte of the vector before the first.
constexpr std::array<uint8_t, 64> OfTwo(size_t part, size_t first, size_t second) {
  std::array<uint8_t, 64> order{};
  for (size_t i = 0; i < 64; ++i) {
    const size_t from = SourceOf(64 * part + i);
    order[i] = static_cast<uint8_t>(from / 64 == second ? 64 + from % 64 : from / 64 == first ? from % 64 : i);
  }
  return order;
}
constexpr size_t kJoined = 3;  // no vector of the source: what was joined before, byte by byte

struct Joins {
  alignas(64) static constexpr std::array<uint8_t, 64> kFirst = OfTwo(0, 0, 1), kMiddle = OfTwo(1, 0, 1),
                                                       kMiddleAndThird = OfTwo(1, kJoined, 2), kLast = OfTwo(2, 1, 2);
};

}  // namespace qv::reverse
#endif  // QV_REVERSE_ONCE

#include "qvclr/kernels/blocks-inl.h"

#if defined(QV_REVERSE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_REVERSE_INL_H
#undef QV_REVERSE_INL_H
#else
#define QV_REVERSE_INL_H
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_BYTE_PERMUTES
constexpr size_t kReverseBlock = 64;

template <bool kComplement>
HWY_INLINE void ReversePixels(const uint8_t* src, uint8_t* dst) {
  using Joins = reverse::Joins;
  const __m512i flip = _mm512_set1_epi8(kComplement ? -1 : 0);
  const auto load = [&](size_t part) HWY_ATTR { return _mm512_xor_si512(_mm512_loadu_si512(src + 64 * part), flip); };
  const __m512i first = load(0), middle = load(1), last = load(2);
  const __m512i of_two = _mm512_permutex2var_epi8(first, OrderOf(Joins::kMiddle), middle);
  _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(first, OrderOf(Joins::kFirst), middle));
  _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi8(of_two, OrderOf(Joins::kMiddleAndThird), last));
  _mm512_storeu_si512(dst + 128, _mm512_permutex2var_epi8(middle, OrderOf(Joins::kLast), last));
}
#elif QV_HAS_VECTORS
// Shuffles of 16 bytes keep up with the memory.
constexpr size_t kReverseBlock = 16;

template <bool kComplement>
HWY_INLINE void ReversePixels(const uint8_t* src, uint8_t* dst) {
  const hn::FixedTag<uint8_t, 16> d;
  const auto flip = hn::Set(d, kComplement ? uint8_t{255} : uint8_t{0});
  const auto first = hn::Xor(hn::LoadU(d, src), flip), middle = hn::Xor(hn::LoadU(d, src + 16), flip),
             last = hn::Xor(hn::LoadU(d, src + 32), flip);
  const auto take = [&](auto vector, size_t part, size_t input) HWY_ATTR {
    return hn::TableLookupBytesOr0(vector, hn::LoadU(d, reverse::kTaken[part][input].data()));
  };
  hn::StoreU(hn::Or(take(first, 0, 0), take(middle, 0, 1)), d, dst);
  hn::StoreU(hn::Or(hn::Or(take(first, 1, 0), take(middle, 1, 1)), take(last, 1, 2)), d, dst + 16);
  hn::StoreU(hn::Or(take(middle, 2, 1), take(last, 2, 2)), d, dst + 32);
}
#else
constexpr size_t kReverseBlock = 1;

template <bool kComplement>
HWY_INLINE void ReversePixels(const uint8_t* /*src*/, uint8_t* /*dst*/) {}  // not called
#endif

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
