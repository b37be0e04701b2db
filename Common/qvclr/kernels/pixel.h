// What the pixel functions of all kernels share: the RGB side in either byte order, and the ways to a byte.
#pragma once

#include <cstdint>

#include "base/exact_math.h"
#include "qvclr/kernel.h"

namespace qv {

struct Rgb {
  int r, g, b;
};

inline Rgb LoadRgb(const uint8_t* src, const RowArgs& args) {
  return args.rgb_first ? Rgb{src[0], src[1], src[2]} : Rgb{src[2], src[1], src[0]};
}

inline void StoreRgb(const Rgb& rgb, uint8_t* dst, const RowArgs& args) {
  dst[args.rgb_first ? 0 : 2] = static_cast<uint8_t>(rgb.r);
  dst[1] = static_cast<uint8_t>(rgb.g);
  dst[args.rgb_first ? 2 : 0] = static_cast<uint8_t>(rgb.b);
}

constexpr int ClampToByte(int value) { return value < 0 ? 0 : value > 255 ? 255 : value; }

constexpr double Clamp(double value, double least, double most) {
  return value < least ? least : value > most ? most : value;
}

// Toward zero, then the low byte; clamped first in the second form.
constexpr uint8_t LowByte(double value) { return static_cast<uint8_t>(TruncateToInt32(value)); }
constexpr uint8_t ClampedByte(double value) { return LowByte(Clamp(value, 0, 255)); }

constexpr int Signed(uint8_t byte) { return static_cast<int8_t>(byte); }

// A kernel of one pixel at a time.
template <auto kPixel, size_t kSrcBytes, size_t kDstBytes>
constexpr Kernel PixelKernel(const char* name, void (*prepare)(RowArgs&) = nullptr) noexcept {
  return {.name = name,
          .row = ScalarRow<kPixel, kSrcBytes, kDstBytes>,
          .src_bytes = kSrcBytes,
          .dst_bytes = kDstBytes,
          .prepare = prepare};
}

}  // namespace qv
