// The arithmetic of grid rows, compiled once per instruction set: weights of corners, weighed sums, and their rounding;
// and the order in which sums stand in vectors.

// The parts that are the same for all instruction sets.
#ifndef QV_GRID_VECTORS_ONCE
#define QV_GRID_VECTORS_ONCE
#include <algorithm>
#include <cstring>
#include <utility>

#include "qvclr/icc_grid.h"
#endif

#include "qvclr/kernels/blocks-inl.h"

#if defined(QV_GRID_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_GRID_VECTORS_INL_H
#undef QV_GRID_VECTORS_INL_H
#else
#define QV_GRID_VECTORS_INL_H
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
#if QV_HAS_VECTORS

// Nodes and rests along one input.
struct Along {
  WordVector even_node, odd_node;
  ByteVector rest;
};
HWY_INLINE Along Locate(ByteVector values, WordVector steps) {
  const U16 d;
  const auto node_of = [d](WordVector product) HWY_ATTR {  // a 255th
    return hn::ShiftRight<8>(hn::Add(hn::Add(product, hn::Set(d, uint16_t{1})), hn::ShiftRight<8>(product)));
  };
  const auto words = hn::BitCast(d, values);
  const auto low_byte = hn::Set(d, uint16_t{255});
  const auto even = hn::Mul(hn::And(words, low_byte), steps), odd = hn::Mul(hn::ShiftRight<8>(words), steps);
  const auto even_node = node_of(even), odd_node = node_of(odd);
  // product - 255 node, in its low byte
  const auto even_rest = hn::And(hn::Add(even, even_node), low_byte);
  const auto odd_rest = hn::ShiftLeft<8>(hn::Add(odd, odd_node));
  return {even_node, odd_node, hn::BitCast(U8(), hn::Or(even_rest, odd_rest))};
}

HWY_INLINE ByteVector SecondDigit(ByteVector rest) {
  return hn::Sub(rest, hn::BitCast(U8(), hn::BroadcastSignBit(hn::BitCast(hn::RebindToSigned<U8>(), rest))));
}

// Eight bytes a pixel, as CornerWeights has them, first those of the lower z: of pixels 0 and 1 of each sixteen, then
// of pixels 2 and 3 of each, and so on.
HWY_INLINE void StoreWeights(ByteVector x, ByteVector y, ByteVector z, uint32_t* weights) {
  const auto xy_least = hn::Min(x, y), xz_least = hn::Min(x, z), yz_least = hn::Min(y, z);
  const auto xy_most = hn::Max(x, y), xz_most = hn::Max(x, z), yz_most = hn::Max(y, z);
  const U16 d16;
  const hn::Repartition<uint32_t, U8> d32;
  WordVector pairs[2][4];  // of the first eight pixels of each sixteen, and of the other eight
  const auto pair = [&](size_t i, ByteVector even, ByteVector odd) HWY_ATTR {
    pairs[0][i] = hn::BitCast(d16, hn::InterleaveLower(U8(), even, odd));
    pairs[1][i] = hn::BitCast(d16, hn::InterleaveUpper(U8(), even, odd));
  };
  pair(0, hn::Not(hn::Max(x, yz_most)), hn::SaturatedSub(y, xz_most));
  pair(1, hn::SaturatedSub(x, yz_most), hn::SaturatedSub(xy_least, z));
  pair(2, hn::SaturatedSub(z, xy_most), hn::SaturatedSub(yz_least, x));
  pair(3, hn::SaturatedSub(xz_least, y), hn::Min(x, yz_least));
  const auto store = [&](WordVector lower_z, WordVector upper_z) HWY_ATTR {
    const auto lower = hn::BitCast(d32, lower_z), upper = hn::BitCast(d32, upper_z);
    hn::StoreU(hn::InterleaveLower(d32, lower, upper), d32, weights);
    hn::StoreU(hn::InterleaveUpper(d32, lower, upper), d32, weights + kBlock / 4);
    weights += kBlock / 2;
  };
  for (const auto& p : pairs) {
    store(hn::InterleaveLower(d16, p[0], p[1]), hn::InterleaveLower(d16, p[2], p[3]));
    store(hn::InterleaveUpper(d16, p[0], p[1]), hn::InterleaveUpper(d16, p[2], p[3]));
  }
}

// A vector of sums is made of the quads of two pixels, of one, or of half a quad. Dword 2 c is of the high bytes of
// channel c, dword 2 c + 1 of its low bytes.
constexpr size_t kSumBytes = QV_HAS_BYTE_PERMUTES ? 64 : std::min<size_t>(kBlock, sizeof(Quad));
constexpr size_t kParts = kSumBytes < sizeof(Quad) ? sizeof(Quad) / kSumBytes : 1;
constexpr size_t kPixelsOfSums = kSumBytes / sizeof(Quad);
using S8 = hn::CappedTag<uint8_t, kSumBytes>;
using S32 = hn::Repartition<uint32_t, S8>;
using S64 = hn::Repartition<uint64_t, S8>;
using SumBytes = hn::Vec<S8>;
using SumVector = hn::Vec<S32>;

// Adds to each dword the products of its four unsigned weights and signed values. No two products together leave
// 16 bits, since the weights of a cell add up to 255.
HWY_INLINE SumVector AddWeighed(SumVector sum, SumBytes weights, SumBytes values) {
#if QV_HAS_BYTE_PERMUTES
  return SumVector{_mm512_dpbusd_epi32(sum.raw, weights.raw, values.raw)};
#elif HWY_TARGET <= HWY_AVX2
  const __m256i pairs = _mm256_maddubs_epi16(weights.raw, values.raw);
  return hn::Add(sum, SumVector{_mm256_madd_epi16(pairs, _mm256_set1_epi16(1))});
#else
  const __m128i pairs = _mm_maddubs_epi16(weights.raw, values.raw);
  return hn::Add(sum, SumVector{_mm_madd_epi16(pairs, _mm_set1_epi16(1))});
#endif
}

// 256 S + S' of two vectors of sums, in even and in odd dwords.
HWY_INLINE SumVector Join(SumVector even, SumVector odd) {
  const S32 d;
  const S64 d64;
  const auto high = hn::OddEven(hn::BitCast(d, hn::ShiftLeft<32>(hn::BitCast(d64, odd))), even);
  const auto low = hn::OddEven(odd, hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(d64, even))));
  constexpr uint32_t kOfSignedBytes = 128u * 255 * 257 * 257;
  return hn::Add(hn::Add(hn::ShiftLeft<8>(high), low), hn::Set(d, kOfSignedBytes));
}

// To 16 bits and from there to bytes, in one step. Only where a lane of `nearest` becomes 0 would it matter whether the
// sum is below the cell's first corner.
HWY_INLINE SumVector RoundToBytes(SumVector sums, uint32_t slack, SumVector& nearest) {
  const S32 d;
  constexpr uint32_t kStep = 65535 * 257;
  const auto guess = hn::ShiftRight<24>(sums);
  const auto biased = hn::Add(sums, hn::Set(d, 65535 * 128 + 32767 + slack));
  const auto rest = hn::Sub(biased, hn::Mul(guess, hn::Set(d, kStep)));  // may be below 0 or a step too large
  const auto to_next = hn::Sub(hn::Set(d, kStep - 1), rest);
  nearest = hn::Min(nearest, hn::Min(hn::Add(rest, hn::Set(d, 1u)), to_next));
  const auto below_0 = [d](SumVector v) HWY_ATTR {
    return hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(hn::RebindToSigned<S32>(), v)));
  };
  return hn::Sub(hn::Add(guess, below_0(rest)), below_0(to_next));
}

// To 16 bits.
HWY_INLINE SumVector RoundToWords(SumVector sums, uint32_t slack, SumVector& nearest) {
  const S32 d;
  const auto biased = hn::Add(sums, hn::Set(d, 32767 + slack));
  const auto words = hn::Add(hn::Add(biased, hn::Set(d, 1u)), hn::ShiftRight<16>(biased));  // times 65536 / 65535
  nearest = hn::Min(nearest, hn::AndNot(words, hn::Set(d, 65535u)));
  return hn::ShiftRight<16>(words);
}

HWY_INLINE SumVector ByteOfWord(SumVector words) {
  const S32 d;
  return hn::ShiftRight<24>(hn::Add(hn::Mul(words, hn::Set(d, 65281u)), hn::Set(d, 8388608u)));
}

#if QV_HAS_BYTE_PERMUTES
// A result has sixteen pixels. Byte b of a dword is of pixel 4 b, in an odd dword of that + 2, and in the upper half of
// the vector of the next one.
constexpr size_t kGroup = 16;
constexpr size_t PixelOf(size_t byte, size_t odd) { return 4 * byte + 2 * odd; }

using blocks::Order64;
constexpr size_t PixelAt(size_t at) { return PixelOf(at % 4, at / 4 % 2) + at / 32; }
constexpr size_t ChannelAt(size_t at) { return at / 16 % 2 * 2 + at / 8 % 2; }

constexpr Order64 OrderOfPixels() {
  Order64 order{};
  for (size_t at = 0; at < 64; ++at) order[at] = static_cast<uint8_t>(PixelAt(at));
  return order;
}
// From the weights of two pixels those at a z, for all channels of both.
constexpr Order64 OrderOfWeights(size_t z) {
  Order64 order{};
  for (size_t at = 0; at < 64; ++at) order[at] = static_cast<uint8_t>(at / 32 * 8 + z * 4 + at % 4);
  return order;
}
constexpr Order64 OrderOfOutput(size_t outputs, bool swaps) {
  Order64 order{};
  for (size_t at = 0; at < 64; ++at) {
    const size_t channel = ChannelAt(at), place = swaps && channel < 3 ? 2 - channel : channel;
    if (channel < outputs) order[PixelAt(at) * outputs + place] = static_cast<uint8_t>(at);
  }
  return order;
}
struct GridOrders {
  alignas(64) static constexpr Order64 kPixels = OrderOfPixels();
  alignas(64) static constexpr Order64 kWeights[2] = {OrderOfWeights(0), OrderOfWeights(1)};
  alignas(64) static constexpr Order64 kOutput[2][2] = {{OrderOfOutput(3, false), OrderOfOutput(3, true)},
                                                        {OrderOfOutput(4, false), OrderOfOutput(4, true)}};
};

HWY_INLINE SumBytes WeightsAtZ(const uint32_t* weights, size_t z) {
  const auto both = hn::BitCast(S8(), hn::LoadDup128(S32(), weights));
  return hn::TableLookupBytes(both, hn::Load(S8(), GridOrders::kWeights[z].data()));
}

HWY_INLINE SumBytes LoadQuads(const Quad* first, const Quad* second, size_t z, size_t /*part*/) {
  const hn::Half<S8> half;
  return hn::Combine(S8(), hn::LoadU(half, reinterpret_cast<const uint8_t*>(second + z)),
                     hn::LoadU(half, reinterpret_cast<const uint8_t*>(first + z)));
}

// One value a pixel, to the bytes of a result.
HWY_INLINE SumBytes SpreadPixels(const uint8_t* values) {
  return hn::TableLookupBytes(hn::LoadDup128(S8(), values), hn::Load(S8(), GridOrders::kPixels.data()));
}

template <size_t kOutputs>
HWY_INLINE void StoreGroups(const uint8_t* groups, bool swaps, uint8_t* dst) {
  const __m512i order = OrderOf(GridOrders::kOutput[kOutputs - 3][swaps]);
  for (size_t i = 0; i < kBlock / kGroup; ++i) {
    const __m512i pixels = _mm512_permutexvar_epi8(order, _mm512_loadu_si512(groups + 64 * i));
    uint8_t* to = dst + kGroup * kOutputs * i;
    if constexpr (kOutputs == 4) {
      _mm512_storeu_si512(to, pixels);
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_castsi512_si256(pixels));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 32), _mm512_extracti32x4_epi32(pixels, 2));
    }
  }
}
#else
// A result has eight pixels, in the bytes of even dwords and then of odd ones.
constexpr size_t kGroup = 8;
constexpr size_t PixelOf(size_t byte, size_t odd) { return byte + 4 * odd; }

HWY_INLINE SumBytes WeightsAtZ(const uint32_t* weights, size_t z) {
  return hn::BitCast(S8(), hn::Set(S32(), weights[z]));
}

HWY_INLINE SumBytes LoadQuads(const Quad* quad, const Quad* /*second*/, size_t z, size_t part) {
  return hn::LoadU(S8(), reinterpret_cast<const uint8_t*>(quad + z) + part * kSumBytes);
}

HWY_INLINE SumBytes SpreadPixels(const uint8_t* values) {
  uint64_t of_eight;
  std::memcpy(&of_eight, values, sizeof of_eight);
  return hn::BitCast(S8(), hn::Set(S64(), of_eight));
}

// From groups of eight pixels, one channel after the other.
template <size_t kOutputs>
HWY_INLINE void StoreGroups(const uint8_t* groups, bool swaps, uint8_t* dst) {
  const hn::Full128<uint8_t> d;
  const hn::Half<decltype(d)> half;
  for (size_t i = 0; i < kBlock / 16; ++i, groups += 64, dst += 16 * kOutputs) {
    const auto channel = [&](size_t c) HWY_ATTR {
      return hn::Combine(d, hn::LoadU(half, groups + 32 + 8 * c), hn::LoadU(half, groups + 8 * c));
    };
    const auto first = channel(swaps ? 2 : 0), third = channel(swaps ? 0 : 2);
    if constexpr (kOutputs == 4)
      hn::StoreInterleaved4(first, channel(1), third, channel(3), d, dst);
    else
      hn::StoreInterleaved3(first, channel(1), third, d, dst);
  }
}
#endif

#endif  // QV_HAS_VECTORS
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
