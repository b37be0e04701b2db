#include "qvclr/icc_grid.h"

#include <algorithm>

#include "base/memory.h"

namespace qv {
namespace {

// The engine subtracts neighbours and multiplies by 16-bit rests in signed 32 bits.
constexpr uint32_t kLargestStep = 32767;

// The rows number the nodes of three inputs in 16 bits.
constexpr size_t kLargestLayer = 65536;

constexpr uint8_t kSignBit = 0x80;

uint32_t CornerValue(const Quad* quad, size_t channel, size_t corner) {
  const QuadChannel& values = quad[corner / 4].channels[channel];
  return static_cast<uint32_t>((values.high[corner % 4] ^ kSignBit) << 8 | (values.low[corner % 4] ^ kSignBit));
}

// In 255ths.
CornerWeights WeightsOfDigit(uint32_t x, uint32_t y, uint32_t z) {
  const auto beyond = [](uint32_t rest, uint32_t other) { return rest > other ? rest - other : 0; };
  return {255 - std::max({x, y, z}), beyond(y, std::max(x, z)), beyond(x, std::max(y, z)), beyond(std::min(x, y), z),
          beyond(z, std::max(x, y)), beyond(std::min(y, z), x), beyond(std::min(x, z), y), std::min({x, y, z})};
}

uint32_t SecondDigit(uint32_t rest) { return rest + (rest >> 7); }

struct Place {
  size_t node;
  uint8_t rest;
};
Place Locate(const IccGrid& grid, uint8_t value) {
  const size_t product = value * (grid.nodes - 1);
  return {product / 255, static_cast<uint8_t>(product % 255)};
}

// The colours at the corners of a cell. Those beyond the last node weigh nothing.
std::array<const uint16_t*, 8> CornersOf(const IccGrid& grid, const uint16_t* colours, const Nodes& at) {
  const size_t n = grid.nodes;
  const auto node = [&](size_t input, size_t upper) { return std::min(at[input] + upper, n - 1); };
  std::array<const uint16_t*, 8> corners;
  for (size_t i = 0; i < 8; ++i) {
    const size_t number = ((at[0] * n + node(1, i >> 1 & 1)) * n + node(2, i & 1)) * n + node(3, i >> 2);
    corners[i] = colours + number * grid.outputs;
  }
  return corners;
}

void SetCorner(QuadChannel& channel, size_t corner, uint32_t value) {
  channel.high[corner] = static_cast<uint8_t>(value >> 8 ^ kSignBit);
  channel.low[corner] = static_cast<uint8_t>(value ^ kSignBit);
}

// Outputs that there are not are 0.
void FillQuad(const std::array<const uint16_t*, 8>& corners, size_t outputs, Quad* quad) {
  for (size_t c = 0; c < std::size(quad->channels); ++c) {
    for (size_t i = 0; i < 4; ++i) SetCorner(quad->channels[c], i, c < outputs ? corners[i][c] : 0);
  }
}

bool IsSteep(const std::array<const uint16_t*, 8>& corners, size_t outputs) {
  for (size_t c = 0; c < outputs; ++c) {
    uint32_t least = 65535, most = 0;
    for (const uint16_t* corner : corners) {
      least = std::min<uint32_t>(least, corner[c]);
      most = std::max<uint32_t>(most, corner[c]);
    }
    if (most - least > kLargestStep) return true;
  }
  return false;
}

}  // namespace

CornerWeights WeightsOf(const std::array<uint8_t, 3>& rests) {
  CornerWeights weights = WeightsOfDigit(rests[0], rests[1], rests[2]);
  const CornerWeights second = WeightsOfDigit(SecondDigit(rests[0]), SecondDigit(rests[1]), SecondDigit(rests[2]));
  for (size_t i = 0; i < weights.size(); ++i) weights[i] = 256 * weights[i] + second[i];
  return weights;
}

// The engine's two ways to divide by 65535 a distance from the first corner, and its overflows.
uint32_t InterpolateInCell(const Quad* quad, size_t channel, const CornerWeights& weights, uint32_t slack) {
  const uint32_t first = CornerValue(quad, channel, 0);
  uint32_t distance = -65535 * first;
  for (size_t i = 0; i < weights.size(); ++i) distance += CornerValue(quad, channel, i) * weights[i];
  const auto signed_shift = [](uint32_t value) { return static_cast<uint32_t>(static_cast<int32_t>(value) >> 16); };
  if (slack == 1) {
    distance += 0x8001;
    distance = signed_shift(distance + signed_shift(distance));
  } else {
    const auto quotient = static_cast<int32_t>(distance + 0x7FFF) / 0xFFFF;
    distance = signed_shift(distance + static_cast<uint32_t>(quotient) + 0x8000);
  }
  return (first + distance) & 0xFFFF;
}

void GridPixel(const IccGrid& grid, const uint8_t* src, uint8_t* dst) {
  std::array<uint8_t, 4> in{}, out{};
  std::copy_n(src, grid.inputs, in.end() - grid.inputs);
  if (grid.swaps_input) std::swap(in[1], in[3]);
  const Place first = Locate(grid, in[0]);
  const uint32_t step = 256u * first.rest + SecondDigit(first.rest);
  std::array<uint8_t, 3> rests;
  size_t node = first.node;
  for (size_t i = 0; i < 3; ++i) {
    const Place place = Locate(grid, in[i + 1]);
    node = node * grid.nodes + place.node;
    rests[i] = place.rest;
  }
  const CornerWeights weights = WeightsOf(rests);
  const Quad* quad = grid.quads + node;
  for (size_t c = 0; c < grid.outputs; ++c) {
    uint32_t colour = InterpolateInCell(quad, c, weights, grid.slack);
    if (step != 0) {
      const uint32_t next = InterpolateInCell(quad + grid.layer, c, weights, grid.slack);
      colour = (colour + (((next - colour) * step + 0x8000) >> 16)) & 0xFFFF;
    }
    out[c] = ByteOf(colour);
  }
  if (grid.swaps_output) std::swap(out[0], out[2]);
  std::copy_n(out.begin(), grid.outputs, dst);
}

Status FillGrid(const uint16_t* colours, IccGrid* grid, SteepCells* steep) {
  const size_t n = grid->nodes;
  grid->layer = n * n * n;
  if (n < 2 || grid->layer > kLargestLayer) return kSuccess;
  const size_t layers = grid->inputs == 4 ? n : 1;
  // Behind the last layer: the one that its colours go on to by steps of 0, and a quad.
  void* memory = Allocate(sizeof(Quad), grid->layer * (grid->inputs == 4 ? layers + 1 : 1) + 2);
  if (!memory) return kNoMemory;
  grid->memory = memory;
  const auto address = reinterpret_cast<uintptr_t>(memory);
  auto* quad = reinterpret_cast<Quad*>(address + (alignof(Quad) - address % alignof(Quad)));
  grid->quads = quad;
  Nodes at;
  for (at[0] = 0; at[0] < layers; ++at[0]) {
    for (at[1] = 0; at[1] < n; ++at[1]) {
      for (at[2] = 0; at[2] < n; ++at[2]) {
        for (at[3] = 0; at[3] < n; ++at[3]) {
          const auto corners = CornersOf(*grid, colours, at);
          FillQuad(corners, grid->outputs, quad++);
          if (!IsSteep(corners, grid->outputs)) continue;
          if (steep->count == SteepCells::kMost) {
            EmptyGrid(grid);
            return kSuccess;
          }
          steep->nodes[steep->count++] = at;
        }
      }
    }
  }
  return kSuccess;
}

// The rows look out for a fourth output.
void MarkCell(IccGrid* grid, const Nodes& nodes) {
  Quad& quad = grid->quads[(nodes[1] * grid->nodes + nodes[2]) * grid->nodes + nodes[3]];
  for (size_t i = 0; i < 4; ++i) SetCorner(quad.channels[3], i, 65535);
}

void EmptyGrid(IccGrid* grid) {
  Release(grid->memory);
  grid->memory = nullptr;
  grid->quads = nullptr;
}

}  // namespace qv
