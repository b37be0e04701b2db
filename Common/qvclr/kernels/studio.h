// Studio-range YUV of ITU-R BT.601 as the video layouts carry it: luma 16..235, chroma around 128.
#pragma once

#include "qvclr/kernels/forms.h"
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

// The same in whole numbers: of R, G, B the half step is in the bias, and no value is negative; what is below zero is
// clamped, whichever way it was rounded.
struct StudioOfRgb {
  static constexpr forms::Form kFirst = {{263, 516, 100, 0}, 16 * 1024 - 440, 10},
                               kMiddle = {{-152, -298, 450, 0}, 128 * 1024, 10},
                               kLast = {{450, -377, -73, 0}, 128 * 1024, 10};
};
struct RgbOfStudio {  // of Y, U and of V
  static constexpr int64_t kBlackAndHalf = 512 - 16 * 1192;
  static constexpr forms::Form kFirst = {{1192, 0, 1634, 0}, kBlackAndHalf - 128 * 1634, 10},
                               kMiddle = {{1192, -400, -833, 0}, kBlackAndHalf + 128 * (400 + 833), 10},
                               kLast = {{1192, 2066, 0, 0}, kBlackAndHalf - 128 * 2066, 10};
};

}  // namespace qv
