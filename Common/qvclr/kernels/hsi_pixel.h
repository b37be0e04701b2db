// CS_HSI: intensity first. The hue is an angle of which 255 stands for half a turn, reflected where blue is not below
// green. The numerator and the missing square root are intended: the hue depends on the magnitude of the colour.
#pragma once

#include <algorithm>
#include <array>

#include "qvclr/kernels/pixel.h"

namespace qv::hsi {

constexpr double kPi = 3.1415926535;
constexpr double kThirdOfPi = 1.0471975511666667, kTwoThirdsOfPi = 2.0943951023333334,
                 kFiveSixthsOfPi = 2.6179938779166667;

// Where the quotient is no number (greys) or no cosine, the angle is none and its byte that of the indefinite value.
inline uint8_t HueByte(const Rgb& rgb) {
  const auto [r, g, b] = rgb;
  const double numerator = 0.5 * (r - g) + (r - b);
  const double denominator = (r - g) * (r - g) + (r - b) * (g - b);
  const uint8_t hue = LowByte(ArcCosine(numerator / denominator) * 255 / 2);
  return b >= g ? static_cast<uint8_t>(255 - hue) : hue;
}

inline void RGBToHSIPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb rgb = LoadRgb(src, args);
  const int intensity = (rgb.r + rgb.g + rgb.b) / 3;
  const double least = std::min({rgb.r, rgb.g, rgb.b});
  dst[0] = static_cast<uint8_t>(intensity);
  dst[1] = HueByte(rgb);
  dst[2] = LowByte((1 - least / intensity) * 255);  // black divides zero by zero
}

// The two cosines of a hue byte's sector.
struct HueCosines {
  double of_hue, of_rest;
};
constexpr double HueOf(size_t byte) { return static_cast<double>(byte) / 255 * kPi; }
inline const std::array<HueCosines, 256>& CosinesOfHues() {
  static const auto table = [] {
    std::array<HueCosines, 256> cosines{};
    for (size_t byte = 0; byte < 256; ++byte) {
      const double x = HueOf(byte);
      const double sector_end = x <= kThirdOfPi ? kThirdOfPi : x <= kTwoThirdsOfPi ? kPi : kFiveSixthsOfPi;
      cosines[byte] = {Cosine(x), Cosine(sector_end - x)};
    }
    return cosines;
  }();
  return table;
}

inline int Truncate16(double value) { return static_cast<int16_t>(TruncateToInt32(value)); }

inline void HSIToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const double intensity = src[0], x = HueOf(src[1]), saturation = src[2] / 255.0;
  const HueCosines& cosines = CosinesOfHues()[src[1]];
  const int weakest = Truncate16(intensity * (1 - saturation));
  const int strongest = Truncate16(intensity * (1 + saturation * cosines.of_hue / cosines.of_rest));
  const int third = static_cast<int16_t>(3 * src[0] - (weakest + strongest));
  Rgb rgb = {third, weakest, strongest};
  if (x <= kThirdOfPi) {
    rgb = {strongest, third, weakest};
  } else if (x <= kTwoThirdsOfPi) {
    rgb = {weakest, strongest, third};
  }
  StoreRgb({ClampToByte(rgb.r), ClampToByte(rgb.g), ClampToByte(rgb.b)}, dst, args);
}

}  // namespace qv::hsi
