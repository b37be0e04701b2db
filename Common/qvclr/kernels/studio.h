// Studio-range YUV of ITU-R BT.601 as the video layouts carry it: luma 16..235, chroma around 128.
#pragma once

#include "qvclr/kernels/pixel.h"

namespace qv {

struct Studio {
  uint8_t y, u, v;
};

// Coefficients of BT.601 times 1024. Half a step is taken off every channel first: intended, it moves results by up to
// one step (black is 15, not 16). Nothing is to be clamped: luma stays in 15..234, chroma in 15..240.
inline Studio StudioFromRgb(const Rgb& rgb) {
  const double r = rgb.r - 0.5, g = rgb.g - 0.5, b = rgb.b - 0.5;
  return {LowByte((100 * b + 516 * g + 263 * r) / 1024 + 16), LowByte((450 * b - 298 * g - 152 * r) / 1024 + 128),
          LowByte((-73 * b - 377 * g + 450 * r) / 1024 + 128)};
}

// 1.164, 2.018, 0.391, 0.813 and 1.596 times 1024; the division truncates toward zero.
inline Rgb RgbFromStudio(const Studio& yuv) {
  const int y = (yuv.y - 16) * 1192, u = yuv.u - 128, v = yuv.v - 128;
  return {ClampToByte((y + 1634 * v + 512) / 1024), ClampToByte((y - 400 * u - 833 * v + 512) / 1024),
          ClampToByte((y + 2066 * u + 512) / 1024)};
}

}  // namespace qv
