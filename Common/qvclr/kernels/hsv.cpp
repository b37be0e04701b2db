// CS_HSV: hue in whole degrees, stored as hue x 255 / 360.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

struct Hsv {
  int h, s, v;  // degrees; 0..255
};

// a x b / c to the nearest whole number, halves away from zero; c > 0.
constexpr int MulDiv(int a, int b, int c) {
  const int product = a * b;
  return (product + (product < 0 ? -c / 2 : c / 2)) / c;
}

Hsv HsvFromRgb(const Rgb& rgb) {
  const auto [r, g, b] = rgb;
  const int value = std::max({r, g, b});
  const int delta = value - std::min({r, g, b});
  const int saturation = value != 0 ? MulDiv(delta, 255, value) : 0;
  if (saturation == 0) return {0, 0, value};
  int hue = 0;
  if (r == value) {
    hue = MulDiv(g - b, 60, delta);
  } else if (g == value) {
    hue = MulDiv(b - r, 60, delta) + 120;
  } else {
    hue = MulDiv(r - g, 60, delta) + 240;
  }
  return {hue < 0 ? hue + 360 : hue, saturation, value};
}

Rgb RgbFromHsv(const Hsv& hsv) {
  const auto [hue, s, v] = hsv;
  if (s == 0) return {v, v, v};
  const int h = hue == 360 ? 0 : hue;
  const int f = h % 60;
  const int p = v - v * s / 255;
  const int q = v - v * s * f / 15300;  // 60 x 255
  const int t = v - v * s * (60 - f) / 15300;
  switch (h / 60) {
    case 0: return {v, t, p};
    case 1: return {q, v, p};
    case 2: return {p, v, t};
    case 3: return {p, q, v};
    case 4: return {t, p, v};
    case 5: return {v, p, q};
    default: return {0, 0, 0};
  }
}

void RGBToHSVPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Hsv hsv = HsvFromRgb(LoadRgb(src, args));
  dst[0] = static_cast<uint8_t>(hsv.h * 255 / 360);
  dst[1] = static_cast<uint8_t>(hsv.s);
  dst[2] = static_cast<uint8_t>(hsv.v);
}

void HSVToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  StoreRgb(RgbFromHsv({src[0] * 360 / 255, src[1], src[2]}), dst, args);
}

}  // namespace

const Kernel RGBToHSV = PixelKernel<RGBToHSVPixel, 3, 3>("RGBToHSV");
const Kernel HSVToRGB = PixelKernel<HSVToRGBPixel, 3, 3>("HSVToRGB");

}  // namespace qv
