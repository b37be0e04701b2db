// CS_HLS: all in 0..255; the turn of the hue has 255 units, sextants of 42: red 0, green 85, blue 170.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

void RGBToHLSPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  const int most = std::max({r, g, b}), least = std::min({r, g, b});
  const int sum = most + least, delta = most - least;
  const int lightness = (sum * 255 + 255) / 510;
  int hue = 0, saturation = 0;
  if (delta != 0) {
    const int span = lightness <= 127 ? sum : 510 - sum;
    saturation = (delta * 255 + span / 2) / span;
    const auto distance = [&](int channel) { return ((most - channel) * 42 + delta / 2) / delta; };
    if (r == most) {
      hue = distance(b) - distance(g);
    } else if (g == most) {
      hue = distance(r) - distance(b) + 85;
    } else {
      hue = distance(g) - distance(r) + 170;
    }
    if (hue < 0) hue += 255;
    if (hue > 255) hue -= 255;
  }
  dst[0] = static_cast<uint8_t>(hue);
  dst[1] = static_cast<uint8_t>(lightness);
  dst[2] = static_cast<uint8_t>(saturation);
}

int HLSValue(int m1, int m2, int hue) {
  if (hue < 0) hue += 255;
  if (hue > 255) hue -= 255;
  if (hue < 42) return m1 + ((m2 - m1) * hue + 21) / 42;
  if (hue < 127) return m2;
  if (hue < 170) return m1 + ((m2 - m1) * (170 - hue) + 21) / 42;
  return m1;
}

Status HLSCheck(const uint8_t* src, size_t width) {
  bool refused = false;
  for (size_t x = 0; x < width; ++x) refused |= src[3 * x + 2] == 0 && src[3 * x] != 0;
  return refused ? kIccTagNotFound : kSuccess;
}

// A grey pixel with a hue ends the conversion there: intended. What stands before it is written.
Status HLSToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; --width, src += 3, dst += 3) {
    const int h = src[0], l = src[1], s = src[2];
    if (s == 0) {
      if (h != 0) return kIccTagNotFound;
      StoreRgb({l, l, l}, dst, args);
      continue;
    }
    const int m2 = l < 128 ? (l * (255 + s) + 127) / 255 : l + s - (l * s + 127) / 255;
    const int m1 = 2 * l - m2;
    const auto channel = [&](int hue) { return (HLSValue(m1, m2, hue) * 255 + 127) / 255; };
    StoreRgb({channel(h + 85), channel(h), channel(h - 85)}, dst, args);
  }
  return kSuccess;
}

}  // namespace

const Kernel RGBToHLS = PixelKernel<RGBToHLSPixel, 3, 3>("RGBToHLS");
const Kernel HLSToRGB = {.name = "HLSToRGB", .row = HLSToRGBRow, .src_bytes = 3, .dst_bytes = 3, .check = HLSCheck};

}  // namespace qv
