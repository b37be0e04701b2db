// CS_HLS: all in 0..255; the turn of the hue has 255 units, sextants of 42: red 0, green 85, blue 170.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/hls.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/hue-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

inline void RGBToHLSPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
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

inline int HLSValue(int m1, int m2, int hue) {
  if (hue < 0) hue += 255;
  if (hue > 255) hue -= 255;
  if (hue < 42) return m1 + ((m2 - m1) * hue + 21) / 42;
  if (hue < 127) return m2;
  if (hue < 170) return m1 + ((m2 - m1) * (170 - hue) + 21) / 42;
  return m1;
}

// A grey pixel with a hue ends the conversion there: intended. What stands before it is written.
inline bool IsRefused(const uint8_t* hls) { return hls[2] == 0 && hls[0] != 0; }

inline Status HLSToRGBPixels(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; --width, src += 3, dst += 3) {
    const int h = src[0], l = src[1], s = src[2];
    if (IsRefused(src)) return kIccTagNotFound;
    if (s == 0) {
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

#if QV_HAS_VECTORS
HWY_INLINE void RGBToHLSBlock(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Strongest colour(LoadRgbPlanes(src, args));
  const auto half = [](ByteVector bytes) HWY_ATTR { return hn::ShiftRight<1>(bytes); };
  const ByteVector lightness = hn::AverageRound(colour.most, colour.least);

  // The sum, or what it lacks of 510: at most 255.
  const ByteVector sum = hn::Add(colour.most, colour.least);
  const ByteVector span = hn::IfThenElse(AtLeast(lightness, 128), hn::Sub(hn::Set(U8(), uint8_t{510 - 256}), sum), sum);
  const Words spread = WordsOf(half(span), colour.delta), once = WordsOf(colour.delta);
  const ByteVector saturation =
      BytesOf(Divisors(NotZero(span)).Into({hn::Sub(spread.lower, once.lower), hn::Sub(spread.upper, once.upper)}));

  const Divisors by_delta(NotZero(colour.delta));
  const auto distance = [&](ByteVector channel) HWY_ATTR {
    return BytesOf(by_delta.Into(WeightedSums<42, 1>(hn::Sub(colour.most, channel), half(colour.delta))));
  };
  const ByteVector forward = distance(colour.previous), backward = distance(colour.next);
  // One unit more where the way back leads over red, whose turn ends at 255.
  const auto over_red = hn::And(colour.is_red, hn::Not(AtLeast(forward, backward)));
  const ByteVector hue = hn::Add(hn::Add(colour.hue, hn::Sub(forward, backward)), hn::VecFromMask(U8(), over_red));
  StorePlanes({hue, lightness, saturation}, dst);
}

HWY_INLINE bool RefusesNone(const Planes& hls) {
  const auto zero = hn::Zero(U8());
  return hn::AllTrue(U8(), hn::Or(hn::Ne(hls.last, zero), hn::Eq(hls.first, zero)));
}

HWY_INLINE void HLSToRGBBlock(const Planes& hls, uint8_t* dst, const RowArgs& args) {
  const auto [hue, lightness, saturation] = hls;
  const auto set = [](uint8_t value) HWY_ATTR { return hn::Set(U8(), value); };
  const auto share = [](WordVector light, WordVector part)
                         HWY_ATTR { return Over255(hn::Add(hn::Mul(light, part), hn::Set(U16(), uint16_t{127}))); };
  const ByteVector product = BytesOf(ForWords(share, WordsOf(lightness), WordsOf(saturation)));
  const ByteVector half_span = hn::IfThenElse(AtLeast(lightness, 128), hn::Sub(saturation, product), product);
  const ByteVector most = hn::Add(lightness, half_span), least = hn::Sub(lightness, half_span);

  // The channel between runs over the span in 42 hues, or 43: a step too far at one end of these, intended, and modulo
  // 256.
  const Sextants<42, 85, 127, 170, 212> sextants(hue);
  const ByteVector corner =
      hn::IfThenElse(sextants.from_sixth, set(255),
                     hn::IfThenElse(sextants.from_fourth, set(170), hn::IfThenElseZero(sextants.from_second, set(85))));
  const ByteVector span = hn::Sub(most, least);
  const Words factors = WordsOf(Apart(hue, corner), set(21)), pairs = WordsOf(span, set(1));
  const auto part = [](WordVector pair, WordVector factor) HWY_ATTR {
    return hn::ShiftRight<5>(TimesOver65536(PairSums(pair, factor), 49933));  // of 42
  };
  const ByteVector between = hn::Add(least, LowBytesOf(ForWords(part, pairs, factors)));
  StoreRgbPlanes(sextants.Colours(most, between, least), dst, args);
}

Status RGBToHLSRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return BlockRow<RGBToHLSPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { RGBToHLSBlock(from, to, args); });
}
Status HLSToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width >= kBlock; width -= kBlock, src += 3 * kBlock, dst += 3 * kBlock) {
    const Planes hls = LoadPlanes(src);
    if (!RefusesNone(hls)) break;
    HLSToRGBBlock(hls, dst, args);
  }
  return HLSToRGBPixels(src, dst, width, args);
}
#else
constexpr auto& RGBToHLSRow = ScalarRow<RGBToHLSPixel, 3, 3>;
constexpr auto& HLSToRGBRow = HLSToRGBPixels;
#endif

Status CheckHLSRow(const uint8_t* src, uint8_t* /*dst*/, size_t width, const RowArgs& /*args*/) {
#if QV_HAS_VECTORS
  for (; width >= kBlock; width -= kBlock, src += 3 * kBlock) {
    if (!RefusesNone(LoadPlanes(src))) return kIccTagNotFound;
  }
#endif
  for (; width > 0; --width, src += 3) {
    if (IsRefused(src)) return kIccTagNotFound;
  }
  return kSuccess;
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(HLSToRGBRow)
QV_ROW_OF_THIS_CPU(CheckHLSRow)
}  // namespace
QV_PIXEL_KERNEL(RGBToHLS, 3, 3)
const Kernel HLSToRGB = {
    .name = "HLSToRGB", .row = HLSToRGBRowOfThisCpu, .src_bytes = 3, .dst_bytes = 3, .check = CheckHLSRowOfThisCpu};
}  // namespace qv
#endif
