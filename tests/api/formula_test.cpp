// Formulas with a converter's settings, and the stop at a grey with a hue.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/converters.h"

namespace {

using namespace qv_test;

// Every 5th level of each channel.
constexpr size_t kGridPixels = 52 * 52 * 52;
Bytes Grid() {
  Bytes pixels;
  for (size_t i = 0; i < kGridPixels; ++i) {
    for (const size_t level : {i / 2704, i / 52 % 52, i % 52}) pixels.push_back(static_cast<uint8_t>(level * 5));
  }
  return pixels;
}
Bytes Converted(const ConverterPtr& converter, const Bytes& source) {
  return Converted(converter, source, source.size() / 3, source.size());
}

TEST(YuvSettings, ReplaceSpansOffsetsAndLuma) {
  ConversionParams params = Params(METHOD_FORMULA);
  Space1Params zero = {.uStructSize = 44, .nLumaTableBytes = 300};  // a count without a table
  params.pSpace1Params = &zero;
  EXPECT_EQ(Converted(MakeConverter(CS_RGB, CS_YUV, params), Grid()), Converted(MakeConverter(CS_RGB, CS_YUV), Grid()));

  Bytes luma(256);
  for (size_t i = 0; i < 256; ++i) luma[i] = static_cast<uint8_t>(255 - i / 2);  // falling, every value twice
  Space1Params settings = {44, 0, 446, 224, 550, 276, luma.data(), 256, 510, {}};
  params.pSpace1Params = &settings;
  const ConverterPtr to_yuv = MakeConverter(CS_RGB, CS_YUV, params), back = MakeConverter(CS_YUV, CS_RGB, params);
  std::ranges::fill(luma, uint8_t{7});  // the converters have their own
  // White: luma 255 of a span of 510 is 128 (127.5 + 0.5), stored as 255 - 64; chroma keeps its middle.
  EXPECT_EQ(Converted(to_yuv, {255, 255, 255}), (Bytes{191, 128, 128}));
  // The smallest index with 191 is 128: luma 256. U is one below its middle, trunc(128 / 255 x 446) - 224: blue 253.
  EXPECT_EQ(Converted(back, {191, 128, 128}), (Bytes{255, 255, 253}));
  // 0 is nearest to 128, index 254: luma 508.
  EXPECT_EQ(Converted(back, {0, 128, 128}), (Bytes{255, 255, 255}));
}

using Three = std::array<double, 3>;

// CIELAB in doubles, with the constants of the formulas.
Three LabOf(const uint8_t* rgb) {
  const auto linear = [](uint8_t byte) { return std::pow(byte / 255.0, 1 / 0.45); };
  const double r = linear(rgb[0]), g = linear(rgb[1]), b = linear(rgb[2]);
  const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.7867 * t + 16.0 / 116; };
  const double fx = f((0.4124529957771301 * r + 0.3575800061225891 * g + 0.18042300641536713 * b) / 0.950166015625);
  const double fy = f(0.21267099678516388 * r + 0.7151600122451782 * g + 0.0721689984202385 * b);
  const double fz =
      f((0.01933399960398674 * r + 0.11919300258159637 * g + 0.9502270221710205 * b) / 1.0876499938964844);
  return {116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)};
}
Three RgbOf(const Three& lab) {
  const auto t = [](double f) { return f * f * f > 0.008856 ? f * f * f : (f - 16.0 / 116) / 7.7867; };
  const double fy = (lab[0] + 16) / 116;
  const double x = t(fy + lab[1] / 500) * 0.950166015625, y = t(fy), z = t(fy - lab[2] / 200) * 1.0876499938964844;
  Three rgb = {3.240478992462158 * x - 1.5371500253677368 * y - 0.49853500723838806 * z,
               -0.9692559838294983 * x + 1.875991940498352 * y + 0.04155600070953369 * z,
               0.05564799904823303 * x - 0.20404300093650818 * y + 1.0573110580444336 * z};
  for (double& value : rgb) value = std::pow(std::clamp(value, 0.0, 1.0), 0.45) * 255;
  return rgb;
}

TEST(LabSettings, CodeAndDecodeByOffsetsAndRanges) {
  const Bytes grid = Grid();
  for (const LabParams& lab : {LabParams{32, 0, 0, 0, 128, 0, 96, -5}, LabParams{32, 0, 10, 120, 100, 300, 120, 250}}) {
    ConversionParams params = Params(METHOD_FORMULA);
    params.pLabParams = &lab;
    const Bytes coded = Converted(MakeConverter(CS_RGB, CS_LAB, params), grid);
    const Bytes decoded = Converted(MakeConverter(CS_LAB, CS_RGB, params), grid);
    const Three ranges = {lab.nLRange > 0 ? lab.nLRange / 1.0 : 100, lab.nARange > 0 ? lab.nARange / 1.0 : 170,
                          lab.nBRange > 0 ? lab.nBRange / 1.0 : 200};
    const int32_t offsets[] = {lab.nLOffset, lab.nAOffset, lab.nBOffset};
    for (size_t i = 0; i < grid.size(); i += 3) {
      const Three exact = LabOf(&grid[i]);
      Three given;
      for (size_t c = 0; c < 3; ++c) {
        given[c] = (grid[i + c] - offsets[c]) * ranges[c] / 255;
        ASSERT_NEAR(coded[i + c], std::clamp(exact[c] * 255 / ranges[c] + offsets[c], 0.0, 255.0), 0.6) << i;
      }
      const Three rgb = RgbOf(given);
      for (size_t c = 0; c < 3; ++c) ASSERT_NEAR(decoded[i + c], rgb[c], 0.51) << i;
    }
  }
}

TEST(Formulas, HlsStopsAtAGreyWithAHue) {
  Bytes source(4 * 3 * 3, 200), target(source.size(), 0xEE);
  source[3 * 5] = 10;     // second line, second pixel
  source[3 * 5 + 2] = 0;  // grey
  EXPECT_EQ(Q_ClrConvertDirect(CS_HLS, CS_RGB, source.data(), target.data(), 4, 3, 0, 0), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_EQ(std::ranges::count(target, 0xEE), 3 * 7) << "the five pixels before it are written, no more";

  Bytes large(3 * 1376 * 12, 200), chained(large.size(), 0xEE);
  large[large.size() - 1] = 0;  // in the last strip of the way through RGB
  EXPECT_EQ(Q_ClrConvertDirect(CS_HLS, CS_XYZ, large.data(), chained.data(), 1376, 12, 0, 0), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_EQ(std::ranges::count(chained, 0xEE), std::ssize(chained));
}

}  // namespace
