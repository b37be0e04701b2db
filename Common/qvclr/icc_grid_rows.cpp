// Rows of grid colours: a block of pixels is taken apart into quads and corner weights, then the quads are weighed.
#include "qvclr/icc_grid.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/icc_grid_rows.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/icc_grid_vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

#if QV_HAS_VECTORS
// What tells the quads and weights of a block of pixels, in the order that interleaving leaves.
struct Places {
  alignas(64) uint16_t node[kBlock];  // as WordAt has them
  alignas(
      64) uint32_t weights[2][2 * kBlock];  // of each digit, at both z: two pixels of each sixteen, the next two ...
  alignas(64) uint8_t first_node[kBlock];   // of four inputs, the first one's node
  alignas(64) uint8_t first_rest[kBlock];   // and its rest
  const Quad* quad[kBlock];                 // of four inputs

  static constexpr size_t WeightsAt(size_t pixel) {
    return pixel % 16 / 2 * (kBlock / 4) + pixel / 16 * 4 + pixel % 2 * 2;
  }
};

template <size_t kInputs>
HWY_INLINE void FindPlaces(const IccGrid& grid, const uint8_t* src, Places& places) {
  const U16 d16;
  const auto steps = hn::Set(d16, static_cast<uint16_t>(grid.nodes - 1));
  ByteVector inputs[4];
  if constexpr (kInputs == 3) {
    const Planes planes = LoadPlanes(src);
    inputs[1] = grid.swaps_input ? planes.last : planes.first;
    inputs[2] = planes.middle;
    inputs[3] = grid.swaps_input ? planes.first : planes.last;
  } else {
    hn::LoadInterleaved4(U8(), src, inputs[0], inputs[1], inputs[2], inputs[3]);
    const Along first = Locate(inputs[0], steps);
    const auto nodes = hn::BitCast(U8(), hn::Or(first.even_node, hn::ShiftLeft<8>(first.odd_node)));
    hn::StoreU(nodes, U8(), places.first_node);
    hn::StoreU(first.rest, U8(), places.first_rest);
  }
  const Along x = Locate(inputs[1], steps), y = Locate(inputs[2], steps), z = Locate(inputs[3], steps);
  const auto nodes = hn::Set(d16, static_cast<uint16_t>(grid.nodes));
  const auto number = [&](WordVector of_x, WordVector of_y, WordVector of_z)
                          HWY_ATTR { return hn::Add(hn::Mul(hn::Add(hn::Mul(of_x, nodes), of_y), nodes), of_z); };
  const auto even = number(x.even_node, y.even_node, z.even_node), odd = number(x.odd_node, y.odd_node, z.odd_node);
  hn::StoreU(hn::InterleaveLower(d16, even, odd), d16, places.node);
  hn::StoreU(hn::InterleaveUpper(d16, even, odd), d16, places.node + kBlock / 2);
  StoreWeights(x.rest, y.rest, z.rest, places.weights[0]);
  StoreWeights(SecondDigit(x.rest), SecondDigit(y.rest), SecondDigit(z.rest), places.weights[1]);
}

// The products of one digit.
HWY_INLINE SumVector AddDigit(SumVector sum, const uint32_t* weights, SumBytes lower, SumBytes upper) {
  return AddWeighed(AddWeighed(sum, WeightsAtZ(weights, 0), lower), WeightsAtZ(weights, 1), upper);
}

template <size_t kInputs>
HWY_INLINE const Quad* QuadOf(const IccGrid& grid, const Places& places, size_t pixel) {
  return kInputs == 4 ? places.quad[pixel] : grid.quads + places.node[WordAt(pixel)];
}

// The sums of a pixel, or of it and the next: for each channel that of the high bytes with what is above the lowest
// 8 bits, then that of the low bytes. `layers` above the pixel's own.
template <size_t kInputs>
HWY_INLINE SumVector WeighPixel(const IccGrid& grid, const Places& places, size_t pixel, size_t part, size_t layers) {
  const Quad* first = QuadOf<kInputs>(grid, places, pixel) + layers * grid.layer;
  const Quad* second = kPixelsOfSums == 2 ? QuadOf<kInputs>(grid, places, pixel + 1) + layers * grid.layer : nullptr;
  const auto lower = LoadQuads(first, second, 0, part), upper = LoadQuads(first, second, 1, part);
  const size_t at = Places::WeightsAt(pixel);
  const auto high = AddDigit(hn::Zero(S32()), places.weights[0] + at, lower, upper);
  return AddDigit(hn::ShiftLeft<8>(high), places.weights[1] + at, lower, upper);
}

// The sums of the pixels that give the bytes number `kByte` of a group's result.
template <size_t kInputs, size_t kByte>
HWY_INLINE SumVector SumsOfByte(const IccGrid& grid, const Places& places, size_t group, size_t part, size_t layers) {
  const size_t pixel = group * kGroup;
  return Join(WeighPixel<kInputs>(grid, places, pixel + PixelOf(kByte, 0), part, layers),
              WeighPixel<kInputs>(grid, places, pixel + PixelOf(kByte, 1), part, layers));
}

// Those bytes, each in the lowest byte of its lane.
template <size_t kInputs, size_t kByte>
HWY_INLINE SumVector ResultsOfByte(const IccGrid& grid, const Places& places, size_t group, size_t part,
                                   SumVector& nearest) {
  const auto sums = SumsOfByte<kInputs, kByte>(grid, places, group, part, 0);
  if constexpr (kInputs == 3) {
    return RoundToBytes(sums, grid.slack, nearest);
  } else {
    const S32 d;
    const auto from = RoundToWords(sums, grid.slack, nearest);
    const auto to = RoundToWords(SumsOfByte<kInputs, kByte>(grid, places, group, part, 1), grid.slack, nearest);
    const auto rests = hn::BitCast(d, SpreadPixels(places.first_rest + group * kGroup));
    const auto rest = hn::And(hn::ShiftRight<8 * kByte>(rests), hn::Set(d, 255u));
    const auto step = hn::Add(hn::Mul(rest, hn::Set(d, 257u)), hn::ShiftRight<7>(rest));
    const auto way = hn::Mul(hn::Sub(to, from), step);
    const auto words = hn::Add(from, hn::ShiftRight<16>(hn::Add(way, hn::Set(d, 32768u))));
    return ByteOfWord(hn::And(words, hn::Set(d, 65535u)));
  }
}

// The results of a group. False when a pixel needs the definition: one at an edge, or in a marked cell.
template <size_t kInputs, size_t kOutputs>
HWY_INLINE bool ConvertGroup(const IccGrid& grid, const Places& places, size_t group, uint8_t* results) {
  const S32 d;
  auto nearest = hn::Set(d, 1u);
  for (size_t part = 0; part < kParts; ++part) {
    auto all = ResultsOfByte<kInputs, 0>(grid, places, group, part, nearest);
    all = hn::Or(all, hn::ShiftLeft<8>(ResultsOfByte<kInputs, 1>(grid, places, group, part, nearest)));
    all = hn::Or(all, hn::ShiftLeft<16>(ResultsOfByte<kInputs, 2>(grid, places, group, part, nearest)));
    all = hn::Or(all, hn::ShiftLeft<24>(ResultsOfByte<kInputs, 3>(grid, places, group, part, nearest)));
    hn::StoreU(hn::BitCast(S8(), all), S8(), results + part * kSumBytes);
  }
  uint64_t marks = 0;
  if constexpr (kOutputs == 3) {  // eight pixels have their fourth output side by side
    for (size_t at = 24; at < 4 * kGroup; at += 32) {
      uint64_t of_eight;
      std::memcpy(&of_eight, results + at, sizeof of_eight);
      marks |= of_eight;
    }
  }
  return marks == 0 && hn::AllFalse(d, hn::Eq(nearest, hn::Zero(d)));
}

template <size_t kInputs, size_t kOutputs>
void ConvertBlock(const IccGrid& grid, const uint8_t* src, uint8_t* dst) {
  Places places;
  FindPlaces<kInputs>(grid, src, places);
  if constexpr (kInputs == 4) {  // these grids are larger than most second caches
    for (size_t p = 0; p < kBlock; ++p) {
      const Quad* quad = grid.quads + places.node[WordAt(p)] + places.first_node[p] * grid.layer;
      places.quad[p] = quad;
      hwy::Prefetch(quad);
      hwy::Prefetch(quad + grid.layer);
    }
  }
  alignas(64) uint8_t results[kBlock * 4];
  bool by_definition[kBlock / kGroup], any = false;
  for (size_t group = 0; group < kBlock / kGroup; ++group) {
    by_definition[group] = !ConvertGroup<kInputs, kOutputs>(grid, places, group, results + 4 * kGroup * group);
    any |= by_definition[group];
  }
  if (!any) return StoreGroups<kOutputs>(results, grid.swaps_output, dst);
  uint8_t source[kBlock * kInputs];  // which `dst` may overwrite
  std::memcpy(source, src, sizeof source);
  StoreGroups<kOutputs>(results, grid.swaps_output, dst);
  for (size_t i = 0; i < kBlock; ++i) {
    if (by_definition[i / kGroup]) GridPixel(grid, source + i * kInputs, dst + i * kOutputs);
  }
}

template <size_t kInputs, size_t kOutputs>
void ConvertRow(const IccGrid& grid, const uint8_t* src, uint8_t* dst, size_t pixels) {
  for (; pixels >= kBlock; pixels -= kBlock, src += kBlock * kInputs, dst += kBlock * kOutputs) {
    ConvertBlock<kInputs, kOutputs>(grid, src, dst);
  }
  if (pixels == 0) return;
  uint8_t in[kBlock * kInputs] = {}, out[kBlock * kOutputs];
  std::memcpy(in, src, pixels * kInputs);
  ConvertBlock<kInputs, kOutputs>(grid, in, out);
  std::memcpy(dst, out, pixels * kOutputs);
}

void Row(const IccGrid& grid, const uint8_t* src, uint8_t* dst, size_t pixels) {
  const bool from_3 = grid.inputs == 3, to_3 = grid.outputs == 3;
  if (from_3 && to_3) return ConvertRow<3, 3>(grid, src, dst, pixels);
  if (from_3) return ConvertRow<3, 4>(grid, src, dst, pixels);
  return to_3 ? ConvertRow<4, 3>(grid, src, dst, pixels) : ConvertRow<4, 4>(grid, src, dst, pixels);
}
#else
void Row(const IccGrid& grid, const uint8_t* src, uint8_t* dst, size_t pixels) {
  for (; pixels > 0; --pixels, src += grid.inputs, dst += grid.outputs) GridPixel(grid, src, dst);
}
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
HWY_EXPORT(Row);
}  // namespace

void GridRow(const IccGrid& grid, const uint8_t* src, uint8_t* dst, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(Row)(grid, src, dst, pixels);
}

}  // namespace qv
#endif
