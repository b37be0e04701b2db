#include "reference/hue_model.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qv_test {
namespace {

struct Channels {
  int32_t r, g, b;
  explicit Channels(const uint8_t* rgb) : r(rgb[0]), g(rgb[1]), b(rgb[2]) {}
  int32_t Largest() const { return std::max({r, g, b}); }
  int32_t Smallest() const { return std::min({r, g, b}); }
};

void Set(uint8_t* bytes, int32_t first, int32_t second, int32_t third) {
  bytes[0] = static_cast<uint8_t>(first);
  bytes[1] = static_cast<uint8_t>(second);
  bytes[2] = static_cast<uint8_t>(third);
}

// The product divided, to nearest, halves away from zero.
int32_t MulDiv(int32_t a, int32_t b, int32_t divisor) {
  return static_cast<int32_t>(std::lround(static_cast<double>(a * b) / divisor));
}

// x86 makes the integer-indefinite value of a not-a-number, and its low byte is 0.
uint8_t LowByte(double value) { return std::isnan(value) ? 0 : static_cast<uint8_t>(static_cast<int32_t>(value)); }

int32_t HlsValue(int32_t m1, int32_t m2, int32_t hue) {
  if (hue < 0) hue += 255;
  if (hue > 255) hue -= 255;
  if (hue < 42) return m1 + ((m2 - m1) * hue + 21) / 42;
  if (hue < 127) return m2;
  if (hue < 170) return m1 + ((m2 - m1) * (170 - hue) + 21) / 42;
  return m1;
}

double Cosine(double angle) { return static_cast<double>(std::cos(static_cast<long double>(angle))); }

// What depends on the hue byte alone: the sector, and the two cosines.
struct HsiHue {
  int sector;
  double cosine, divisor;
};
std::array<HsiHue, 256> HsiHues() {
  std::array<HsiHue, 256> hues{};
  for (size_t i = 0; i < 256; ++i) {
    const double x = static_cast<double>(i) / 255 * 3.1415926535;
    const int sector = x <= 1.0471975511666667 ? 0 : x <= 2.0943951023333334 ? 1 : 2;
    constexpr double kReference[] = {1.0471975511666667, 3.1415926535, 2.6179938779166667};
    hues[i] = {sector, Cosine(x), Cosine(kReference[sector] - x)};
  }
  return hues;
}

}  // namespace

void HsvFromRgb(const uint8_t* rgb, uint8_t* hsv) {
  const Channels in(rgb);
  const int32_t v = in.Largest(), delta = v - in.Smallest();
  const int32_t s = v != 0 ? MulDiv(delta, 255, v) : 0;
  int32_t hue = 0;
  if (s != 0) {
    if (in.r == v) {
      hue = MulDiv(in.g - in.b, 60, delta);
    } else if (in.g == v) {
      hue = MulDiv(in.b - in.r, 60, delta) + 120;
    } else {
      hue = MulDiv(in.r - in.g, 60, delta) + 240;
    }
  }
  if (hue < 0) hue += 360;
  Set(hsv, hue * 255 / 360, s, v);
}

void HsvToRgb(const uint8_t* hsv, uint8_t* rgb) {
  const int32_t s = hsv[1], v = hsv[2], hue = hsv[0] * 360 / 255 % 360, f = hue % 60;
  const int32_t p = v - v * s / 255, q = v - v * s * f / 15300, t = v - v * s * (60 - f) / 15300;
  if (s == 0) return Set(rgb, v, v, v);
  switch (hue / 60) {
    case 0: return Set(rgb, v, t, p);
    case 1: return Set(rgb, q, v, p);
    case 2: return Set(rgb, p, v, t);
    case 3: return Set(rgb, p, q, v);
    case 4: return Set(rgb, t, p, v);
    default: return Set(rgb, v, p, q);
  }
}

void HlsFromRgb(const uint8_t* rgb, uint8_t* hls) {
  const Channels in(rgb);
  const int32_t mx = in.Largest(), mn = in.Smallest(), sum = mx + mn, delta = mx - mn;
  const int32_t l = (sum * 255 + 255) / 510;
  if (delta == 0) return Set(hls, 0, l, 0);
  const int32_t s = l <= 127 ? (delta * 255 + sum / 2) / sum : (delta * 255 + (510 - sum) / 2) / (510 - sum);
  const auto distance = [&](int32_t channel) { return ((mx - channel) * 42 + delta / 2) / delta; };
  const int32_t rc = distance(in.r), gc = distance(in.g), bc = distance(in.b);
  int32_t h = in.r == mx ? bc - gc : in.g == mx ? rc - bc + 85 : gc - rc + 170;
  if (h < 0) h += 255;
  if (h > 255) h -= 255;
  Set(hls, h, l, s);
}

bool HlsToRgb(const uint8_t* hls, uint8_t* rgb) {
  const int32_t h = hls[0], l = hls[1], s = hls[2];
  if (s == 0 && h != 0) return false;
  const int32_t m2 = l < 128 ? (l * (255 + s) + 127) / 255 : l + s - (l * s + 127) / 255, m1 = 2 * l - m2;
  const auto component = [&](int32_t hue) { return s == 0 ? l : (HlsValue(m1, m2, hue) * 255 + 127) / 255; };
  Set(rgb, component(h + 85), component(h), component(h - 85));
  return true;
}

void HsiFromRgb(const uint8_t* rgb, uint8_t* hsi) {
  const Channels in(rgb);
  const int32_t rg = in.r - in.g, rb = in.r - in.b, gb = in.g - in.b;
  const int32_t i = (in.r + in.g + in.b) / 3;
  const double quotient = (0.5 * rg + rb) / static_cast<float>(rg * rg + rb * gb);
  const auto theta = static_cast<double>(std::acos(static_cast<long double>(quotient)));
  const uint8_t h = LowByte(theta * 255 / 2);
  Set(hsi, i, in.b >= in.g ? 255 - h : h, LowByte((1 - static_cast<double>(in.Smallest()) / i) * 255));
}

void HsiToRgb(const uint8_t* hsi, uint8_t* rgb) {
  static const std::array<HsiHue, 256> kHues = HsiHues();
  const auto [sector, cosine, divisor] = kHues[hsi[1]];
  const int32_t i = hsi[0];
  const double s = hsi[2] / 255.0;
  // Names as in the first sector; the others are the same, turned by one and by two channels.
  const auto blue = static_cast<int16_t>(i * (1 - s)), red = static_cast<int16_t>(i * (1 + s * cosine / divisor));
  const auto green = static_cast<int16_t>(3 * i - (blue + red));
  const auto clamped = [](int16_t value) { return std::clamp<int32_t>(value, 0, 255); };
  const int32_t r = clamped(red), g = clamped(green), b = clamped(blue);
  if (sector == 0) return Set(rgb, r, g, b);
  if (sector == 1) return Set(rgb, b, r, g);
  Set(rgb, g, b, r);
}

}  // namespace qv_test
