// Transforms between two matrix/TRC profiles, evaluated by the library itself with the engine's whole numbers: a curve
// to linear light in 16384ths, one matrix, and a curve to bytes. Where the matrices cancel each other out, each channel
// goes its own way.
#pragma once

#include <lcms2.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace qv {

// Of R, G and B, in this order.
struct IccShaper {
  enum class Kind : uint8_t { kNone, kChannels, kMatrix };
  static constexpr int kOne = 16384;
  Kind kind;
  bool swaps_input, swaps_output;                        // B, G, R in the pixels
  using Table = std::array<uint8_t, 256>;                // of bytes
  std::array<Table, 3> bytes;                            // the result, without a matrix
  std::array<Table, 3> linear_low, linear_high;          // linear light up to kOne, in two bytes
  std::array<std::array<int16_t, 3>, 3> matrix;          // in 16384ths
  std::array<std::array<uint8_t, kOne + 1>, 3> encoded;  // of linear light
  std::array<uint8_t, 3> encoding;                       // each channel's table among these: equal ones share the first
};

// What the engine is about to evaluate, as far as it has this form. Leaves `bytes` to whoever has the transform.
void FillShaper(const cmsPipeline* pipeline, IccShaper* shaper);

// The definition, one pixel at a time.
void ShaperPixel(const IccShaper& shaper, const uint8_t* src, uint8_t* dst);
// `src` may be `dst`.
void ShaperRow(const IccShaper& shaper, const uint8_t* src, uint8_t* dst, size_t pixels);

}  // namespace qv
