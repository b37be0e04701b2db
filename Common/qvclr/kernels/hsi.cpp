// CS_HSI in vectors: the angles of single precision, and the pixel functions for those that come near to the next byte.
#include "qvclr/kernels/hsi_pixel.h"

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/hsi.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/doubles-inl.h"
#include "qvclr/kernels/floats-inl.h"

#ifndef QV_HSI_ONCE
#define QV_HSI_ONCE
namespace qv {
namespace {

// What the double-precision formula makes of a saturation that is a whole number of bytes: some fall below it.
constexpr auto kWholeSaturations = [] {
  std::array<uint8_t, 256> saturations{};
  for (size_t byte = 0; byte < 256; ++byte) {
    saturations[byte] = LowByte((1 - static_cast<double>(255 - byte) / 255) * 255);
  }
  return saturations;
}();

consteval uint8_t FirstHueAbove(double angle) {
  uint8_t byte = 0;
  while (hsi::HueOf(byte) <= angle) ++byte;
  return byte;
}

const blocks::FloatTable& CosineRatios() {
  static const blocks::FloatTable table = [] {
    std::array<double, 256> ratios{};
    for (size_t byte = 0; byte < 256; ++byte) {
      const hsi::HueCosines& cosines = hsi::CosinesOfHues()[byte];
      ratios[byte] = cosines.of_hue / cosines.of_rest / 255;
    }
    return blocks::FloatTable(ratios);
  }();
  return table;
}

}  // namespace
}  // namespace qv
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

#if QV_HAS_VECTORS

constexpr double kWindow = 2e-4;

// The cosine of the hue is numerator / denominator: twice 0.5 (r - g) + (r - b), and twice (r - g)^2 + (r - b) (g - b).
struct HueQuotient {
  FloatVector numerator, denominator;
};
HWY_INLINE FloatVector PairProducts(WordVector a, WordVector b) {
  IntVector none = hn::Zero(I32());
  return FloatOf(
      hn::ReorderWidenMulAccumulate(I32(), hn::BitCast(I16(), a), hn::BitCast(I16(), b), hn::Zero(I32()), none));
}
HWY_INLINE HueQuotient QuotientOf(WordVector first, WordVector second) {
  const auto one_and_two = hn::BitCast(U16(), hn::Set(I32(), 0x20001));
  const auto denominator = PairProducts(first, second);
  return {PairProducts(first, one_and_two), hn::Add(denominator, denominator)};
}

// The angle in bytes, zero where there is none.
HWY_INLINE FloatVector AngleOf(const HueQuotient& quotient) {
  const auto magnitude = hn::Abs(quotient.numerator);
  const auto inverse = hn::Div(SetFloat(1), quotient.denominator);
  const auto cosine = hn::Mul(magnitude, inverse);
  const auto rest = hn::Mul(hn::Sub(quotient.denominator, magnitude), inverse);
  // 127.5 arccos(x) / sqrt(1 - x)
  const auto slope = Polynomial(cosine, 200.276528, -27.3612648, 11.3435288, -6.38957365, 3.91707061, -2.14723418,
                                0.827668983, -0.154496566);
  const auto acute = hn::Mul(hn::Sqrt(rest), slope);
  const auto angle =
      hn::IfThenElse(hn::Lt(quotient.numerator, hn::Zero(F32())), hn::Sub(SetFloat(400.553063332698949), acute), acute);
  return hn::IfThenElseZero(hn::Ge(quotient.denominator, hn::Max(magnitude, SetFloat(1))), angle);
}

HWY_INLINE ByteVector SaturationOf(ByteVector least, ByteVector intensity) {
  const ByteVector spread = hn::Sub(intensity, least), divisor = NotZero(intensity);
  const Words whole = WordsOf(hn::Zero(U8()), spread), once = WordsOf(spread);
  const Words numerator = {hn::Sub(whole.lower, once.lower), hn::Sub(whole.upper, once.upper)};  // x 255
  const Words quotient = Divisors(divisor).Into(numerator);
  const auto rest = [](WordVector n, WordVector q, WordVector d) HWY_ATTR { return hn::Sub(n, hn::Mul(q, d)); };
  const ByteVector rests = BytesOf(ForWords(rest, numerator, quotient, WordsOf(divisor))), bytes = BytesOf(quotient);
  return hn::IfThenElse(hn::Eq(rests, hn::Zero(U8())), LookUp(kWholeSaturations, bytes), bytes);
}

HWY_INLINE void RGBToHSIBlock(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const RgbPlanes rgb = LoadRgbPlanes(src, args);
  const Words r = WordsOf(rgb.r), g = WordsOf(rgb.g), b = WordsOf(rgb.b);
  const auto third = [](WordVector x, WordVector y, WordVector z)
                         HWY_ATTR { return TimesOver65536(hn::Add(x, hn::Add(y, z)), 21846); };
  const ByteVector intensity = BytesOf(ForWords(third, r, g, b));
  const ByteVector saturation = SaturationOf(hn::Min(rgb.r, hn::Min(rgb.g, rgb.b)), intensity);

  Ints angle;
  Floats clearance;
  const auto hues = [&](size_t i, WordVector first, WordVector second) HWY_ATTR {
    const FloatVector exact = AngleOf(QuotientOf(first, second));
    angle.at[i] = WholeOf(exact);
    clearance.at[i] = hn::Abs(OffWholeButZero(exact));
  };
  const auto half = [&](size_t i, WordVector x, WordVector y, WordVector z) HWY_ATTR {
    const auto x_y = hn::Sub(x, y), x_z = hn::Sub(x, z), y_z = hn::Sub(y, z);
    hues(i, hn::InterleaveLower(U16(), x_y, x_z), hn::InterleaveLower(U16(), x_y, y_z));
    hues(i + 1, hn::InterleaveUpper(U16(), x_y, x_z), hn::InterleaveUpper(U16(), x_y, y_z));
  };
  half(0, r.lower, g.lower, b.lower);
  half(2, r.upper, g.upper, b.upper);
  const ByteVector hue = LowBytesOf(WordsOf(angle));
  const auto reflected = AtLeast(rgb.b, rgb.g);
  StoreSettledPlanes<hsi::RGBToHSIPixel>(
      clearance, kWindow, {intensity, hn::IfThenElse(reflected, hn::Not(hue), hue), saturation}, src, dst, args);
}

// In double precision: it comes out whole too often for anything else.
HWY_INLINE FewInts Weakest(FewInts intensity, FewInts saturation) {
  const DoubleVector share = hn::Div(DoubleOf(saturation), SetDouble(255));
  return WholeOf(hn::Mul(DoubleOf(intensity), hn::Sub(SetDouble(1), share)));
}

HWY_INLINE void HSIToRGBBlock(const uint8_t* src, uint8_t* dst, const blocks::FloatTable& ratios, const RowArgs& args) {
  const auto [intensity, hue, saturation] = LoadPlanes(src);
  const Words intensities = WordsOf(intensity);
  const Ints i = IntsOf(intensities), s = IntsOf(WordsOf(saturation));
  const Floats ratio = LookUp(ratios, hue);
  Ints weak, strong;
  Floats clearance;
  for (size_t k = 0; k < 4; ++k) {
    weak.at[k] = InHalves([](FewInts in, FewInts sat) HWY_ATTR { return Weakest(in, sat); }, i.at[k], s.at[k]);
    const auto exact_i = FloatOf(i.at[k]), exact_s = FloatOf(s.at[k]);
    const auto strongest = hn::MulAdd(exact_i, hn::Mul(exact_s, ratio.at[k]), exact_i);
    strong.at[k] = WholeOf(strongest);
    // Without intensity or saturation it is whole, and right.
    const auto is_whole = hn::Eq(hn::Mul(exact_i, exact_s), hn::Zero(F32()));
    clearance.at[k] = hn::IfThenElse(is_whole, SetFloat(1), hn::Abs(OffWholeButZero(strongest)));
  }
  const Words weakest = WordsOf(weak), strongest = WordsOf(strong);
  const auto third = [](WordVector x, WordVector y, WordVector z)
                         HWY_ATTR { return hn::Sub(hn::Add(x, hn::Add(x, x)), hn::Add(y, z)); };
  const ByteVector most = BytesOf(strongest), least = BytesOf(weakest),
                   rest = BytesOf(ForWords(third, intensities, weakest, strongest));
  const ByteMask from_green = AtLeast(hue, FirstHueAbove(hsi::kThirdOfPi)),
                 from_blue = AtLeast(hue, FirstHueAbove(hsi::kTwoThirdsOfPi));
  const auto sector = [&](ByteVector red, ByteVector green, ByteVector blue)
                          HWY_ATTR { return hn::IfThenElse(from_blue, blue, hn::IfThenElse(from_green, green, red)); };
  const RgbPlanes rgb = {sector(most, least, rest), sector(rest, most, least), sector(least, rest, most)};
  StoreSettledPlanes<hsi::HSIToRGBPixel>(clearance, kWindow, InByteOrder(rgb, args), src, dst, args);
}

Status RGBToHSIRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return BlockRow<hsi::RGBToHSIPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { RGBToHSIBlock(from, to, args); });
}
Status HSIToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const blocks::FloatTable& ratios = CosineRatios();
  return BlockRow<hsi::HSIToRGBPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { HSIToRGBBlock(from, to, ratios, args); });
}
#else
constexpr auto& RGBToHSIRow = ScalarRow<hsi::RGBToHSIPixel, 3, 3>;
constexpr auto& HSIToRGBRow = ScalarRow<hsi::HSIToRGBPixel, 3, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToHSI, 3, 3)
QV_PIXEL_KERNEL(HSIToRGB, 3, 3)
}  // namespace qv
#endif
