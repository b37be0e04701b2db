// CS_HSV: hue in whole degrees, stored as hue x 255 / 360.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/hsv.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/hue-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

struct Hsv {
  int h, s, v;  // degrees; 0..255
};

// a x b / c to the nearest whole number, halves away from zero; c > 0.
constexpr int MulDiv(int a, int b, int c) {
  const int product = a * b;
  return (product + (product < 0 ? -c / 2 : c / 2)) / c;
}

inline Hsv HsvFromRgb(const Rgb& rgb) {
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

inline Rgb RgbFromHsv(const Hsv& hsv) {
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

inline void RGBToHSVPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Hsv hsv = HsvFromRgb(LoadRgb(src, args));
  dst[0] = static_cast<uint8_t>(hsv.h * 255 / 360);
  dst[1] = static_cast<uint8_t>(hsv.s);
  dst[2] = static_cast<uint8_t>(hsv.v);
}

inline void HSVToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  StoreRgb(RgbFromHsv({src[0] * 360 / 255, src[1], src[2]}), dst, args);
}

#if QV_HAS_VECTORS
HWY_INLINE void RGBToHSVBlock(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Strongest colour(LoadRgbPlanes(src, args));
  const auto half = [](ByteVector bytes) HWY_ATTR { return hn::ShiftRight<1>(bytes); };

  const Words spread = WordsOf(half(colour.most), colour.delta), once = WordsOf(colour.delta);
  const Words saturation =
      Divisors(NotZero(colour.most)).Into({hn::Sub(spread.lower, once.lower), hn::Sub(spread.upper, once.upper)});

  const Words degrees = Divisors(NotZero(colour.delta))
                            .Into(WeightedSums<60, 1>(Distance(colour.next, colour.previous), half(colour.delta)));
  // Up to 60 degrees in units of a byte, 17 / 24 of them: rounded down forward, up backward, and one unit more where
  // the way back leads over red, whose turn ends at 255 units.
  const auto rounded_down = [](WordVector words) HWY_ATTR { return TimesOver65536(words, 46422); };
  const auto rest = [](WordVector words) HWY_ATTR { return TimesOver65536(words, 19115); };
  const ByteVector forward = BytesOf(ForWords(rounded_down, degrees));
  const ByteVector backward = hn::Sub(BytesOf(degrees), BytesOf(ForWords(rest, degrees)));
  const ByteVector over_red = hn::IfThenElseZero(colour.is_red, hn::Min(backward, hn::Set(U8(), uint8_t{1})));
  const auto is_forward = AtLeast(colour.next, colour.previous);
  const ByteVector hue =
      hn::IfThenElse(is_forward, hn::Add(colour.hue, forward), hn::Sub(colour.hue, hn::Add(backward, over_red)));
  StorePlanes({hue, BytesOf(saturation), colour.most}, dst);
}

HWY_INLINE void HSVToRGBBlock(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [stored, saturation, value] = LoadPlanes(src);
  // 360 degrees are none.
  const ByteVector hue = hn::IfThenZeroElse(hn::Eq(stored, hn::Set(U8(), uint8_t{255})), stored);
  const Sextants<43, 85, 128, 170, 213> sextants(hue);
  const auto seven_17ths = [](WordVector words) HWY_ATTR { return TimesOver65536(words, 26986); };
  const ByteVector degrees = hn::Add(hue, BytesOf(ForWords(seven_17ths, WordsOf(hue))));  // modulo 256
  const auto set = [](uint8_t bound) HWY_ATTR { return hn::Set(U8(), bound); };
  const ByteVector corner =
      hn::IfThenElse(sextants.from_fifth, set(300 - 256), hn::IfThenElse(sextants.from_third, set(180), set(60)));

  const auto times = [](WordVector a, WordVector b) HWY_ATTR { return hn::Mul(a, b); };
  const Words colour = ForWords(times, WordsOf(value), WordsOf(saturation));
  const ByteVector least = hn::Sub(value, BytesOf(ForWords(Over255, colour)));
  // colour x degrees / 15300: at most one too small without the correction.
  const auto share = [](WordVector full, WordVector part) HWY_ATTR {
    const WordVector quotient =
        hn::ShiftRight<7>(hn::MulHigh(full, hn::Mul(part, hn::Set(U16(), uint16_t{548}))));  // 2^23 / 15300
    const WordVector rest = hn::Sub(hn::Mul(full, part), hn::Mul(quotient, hn::Set(U16(), uint16_t{15300})));
    const auto too_small = hn::Gt(hn::BitCast(I16(), rest), hn::Set(I16(), int16_t{15299}));
    return hn::Sub(quotient, hn::BitCast(U16(), hn::VecFromMask(I16(), too_small)));
  };
  const ByteVector between = hn::Sub(value, BytesOf(ForWords(share, colour, WordsOf(Apart(degrees, corner)))));
  StoreRgbPlanes(sextants.Colours(value, between, least), dst, args);
}

Status RGBToHSVRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return BlockRow<RGBToHSVPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { RGBToHSVBlock(from, to, args); });
}
Status HSVToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return BlockRow<HSVToRGBPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { HSVToRGBBlock(from, to, args); });
}
#else
constexpr auto& RGBToHSVRow = ScalarRow<RGBToHSVPixel, 3, 3>;
constexpr auto& HSVToRGBRow = ScalarRow<HSVToRGBPixel, 3, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToHSV, 3, 3)
QV_PIXEL_KERNEL(HSVToRGB, 3, 3)
}  // namespace qv
#endif
