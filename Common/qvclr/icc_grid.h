// The grids of colours into which the engine turns most transforms, evaluated by the library itself: the engine's bytes
// at many times its speed.
//
// Along each input a byte v lies n = v (nodes - 1) / 255 nodes from the first, with a remainder of k 255ths. The engine
// reckons with rests in 65536ths; they come to 257 k + (k >= 128), so two digits of base 256 say them: k and
// k' = k + (k >= 128). In the tetrahedron around a colour the weight of a corner is a difference of rests, hence for
// each digit a byte, and the eight weights of a cell (at least four of them zero) add up to 255. With S and S' the sums
// of both, 256 S + S' is 65535 times the colour, exactly. The engine makes of it the largest x for which 65535 x -
// 32767 is not above it, or above it by at most the slack of its rounding, and by one more in colours below the cell's
// first corner.
//
// A grid of four inputs is one of three for each node of its first one, with a linear step between two of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/status.h"

namespace qv {

// One output at the four corners of a quad: 2 x + y has x, y = 1 on the upper side. As signed bytes, by 128 too small.
struct QuadChannel {
  uint8_t high[4], low[4];
};
// The corners of a cell at its lower z. Those at the upper one are the next quad.
struct alignas(32) Quad {
  QuadChannel channels[4];
};

struct IccGrid {
  size_t inputs, outputs;          // each 3 or 4
  size_t nodes;                    // of each input
  size_t layer;                    // nodes of the last three inputs
  uint32_t slack;                  // of the engine's rounding
  bool swaps_input, swaps_output;  // B, G, R in the pixels for R, G, B in the grid
  // One for each node, the last input fastest, and what may be read behind them. Null where there is no grid.
  Quad* quads;
  void* memory;  // that holds them
};

// Nodes of the inputs, of which three inputs lack the first.
using Nodes = std::array<uint16_t, 4>;

// Where cells begin whose corners are so far apart that the engine's sums can overflow.
struct SteepCells {
  static constexpr size_t kMost = 128;
  size_t count;
  Nodes nodes[kMost];
};

// Of 16-bit colours, `outputs` numbers a node, the last input fastest. kNoMemory. Leaves `quads` null for a grid with
// too many nodes or too many steep cells.
Status FillGrid(const uint16_t* colours, IccGrid* grid, SteepCells* steep);
void EmptyGrid(IccGrid* grid);
// Has the colours of a cell made by the definition, which overflows as the engine does. Of three inputs and outputs
// only.
void MarkCell(IccGrid* grid, const Nodes& nodes);

// As the engine rounds 16 bits.
constexpr uint8_t ByteOf(uint32_t colour) { return static_cast<uint8_t>((colour * 65281 + 8388608) >> 24); }

// The definition, one pixel at a time.
void GridPixel(const IccGrid& grid, const uint8_t* src, uint8_t* dst);
// `src` may be `dst` when the pixels have equal sizes.
void GridRow(const IccGrid& grid, const uint8_t* src, uint8_t* dst, size_t pixels);

// Of the corners of a cell, times 65535: 4 z + 2 x + y has x, y, z = 1 on the upper side.
using CornerWeights = std::array<uint32_t, 8>;
// From the rests along x, y and z, in 255ths.
CornerWeights WeightsOf(const std::array<uint8_t, 3>& rests);
// The 16-bit value of an output in the cell that begins at `quad`.
uint32_t InterpolateInCell(const Quad* quad, size_t channel, const CornerWeights& weights, uint32_t slack);

}  // namespace qv
