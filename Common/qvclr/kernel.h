// What a formula kernel is: one function over a row (or a band of rows), and a line of data about it. Checks, paddings,
// byte order and the row loop are in kernel.cpp, once for all kernels.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/status.h"

namespace qv {

struct Frame;

// Black generation of the CMYK formulas: what one call needs of the parameter.
struct BlackGeneration {
  double fifth_power;                    // of the parameter as a fraction
  int32_t grey_factor;                   // 256ths of its fourth power, as a 16-bit integer
  std::array<uint8_t, 256> of_smallest;  // black by the smallest of the inks
};

// What a row function is told beside its pixels.
struct RowArgs {
  bool rgb_first = true;           // the RGB side is R, G, B; else B, G, R
  int32_t black_param = 175;       // of the CMYK formulas, in thousandths
  const void* record = nullptr;    // the kernel's own settings, null where the converter has none
  const uint8_t* table = nullptr;  // the first node of an emulation table
  BlackGeneration black{};         // made of black_param by the kernels that need it, once per call

  // For kernels that work on bands of rows or on planes.
  size_t row = 0;         // number of the band's first row
  size_t height = 0;      // rows of the frame
  size_t rgb_stride = 0;  // from one line of the RGB side to the next
};

// Converts `width` pixels. For a band, `src` and `dst` are its first row; on a planar side, that row of the first
// plane. Anything but success stops the conversion there and is its result.
using RowFn = Status (*)(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args);

struct Kernel {
  const char* name;
  RowFn row;
  uint8_t src_bytes, dst_bytes;  // of one unit: a pixel, or a packed group of pixels
  uint8_t unit_pixels = 1;
  uint8_t band_rows = 1;
  void (*prepare)(RowArgs& args) = nullptr;  // fills what a call needs once
  RowFn check = nullptr;                     // writes nothing, and returns what `row` would; null where that is success
};

// Makes a row of a pixel function.
template <auto kPixel, size_t kSrcBytes, size_t kDstBytes>
Status ScalarRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; --width, src += kSrcBytes, dst += kDstBytes) kPixel(src, dst, args);
  return kSuccess;
}

// Size rules: kInvalidWidthAlignment, kInvalidYuv9Size. A buffer that does not hold the frame with every line's
// padding: kInvalidParameter. An overlap that needs a copy of the input: kNoMemory when there is none.
Status RunKernel(const Kernel& kernel, const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst,
                 RowArgs args);

// Two kernels with packed R, G, B between them, in strips of rows that stay in the cache. The buffers have been tested
// with the paddings of all lines. Nothing is written when a pixel of the source is refused.
Status RunKernelPair(const Kernel& to_rgb, const Kernel& from_rgb, const Frame& in, const uint8_t* src,
                     const Frame& out, uint8_t* dst);

}  // namespace qv
