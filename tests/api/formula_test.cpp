// Formulas through the exported functions: settings of a converter, chained pairs, and the stop at a grey with a hue.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/converters.h"

namespace {

using namespace qv_test;
using Bytes = std::vector<uint8_t>;

Bytes Convert(const ConverterPtr& converter, const Bytes& source, size_t out_bytes, int32_t width) {
  Bytes target(out_bytes);
  EXPECT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), width, 1, 0, 0), SUCCESS);
  return target;
}

// Every 5th level of each channel.
Bytes Grid() {
  Bytes pixels;
  for (int i = 0; i < 52 * 52 * 52; ++i) {
    for (const int level : {i / 2704, i / 52 % 52, i % 52}) pixels.push_back(static_cast<uint8_t>(level * 5));
  }
  return pixels;
}
const int32_t kGridPixels = 52 * 52 * 52;

TEST(YuvSettings, ReplaceSpansOffsetsAndLuma) {
  const Bytes grid = Grid();
  ConversionParams params = Params(METHOD_FORMULA);
  Space1Params zero = {.uStructSize = 44, .nLumaTableBytes = 300};  // a count without a table
  params.pSpace1Params = &zero;
  const Bytes plain = Convert(MakeConverter(CS_RGB, CS_YUV), grid, grid.size(), kGridPixels);
  EXPECT_EQ(Convert(MakeConverter(CS_RGB, CS_YUV, params), grid, grid.size(), kGridPixels), plain);

  Bytes luma(256);
  for (size_t i = 0; i < 256; ++i) luma[i] = static_cast<uint8_t>(255 - i / 2);  // falling, every value twice
  Space1Params settings = {44, 0, 446, 224, 550, 276, luma.data(), 256, 510, {}};
  params.pSpace1Params = &settings;
  const ConverterPtr to_yuv = MakeConverter(CS_RGB, CS_YUV, params), back = MakeConverter(CS_YUV, CS_RGB, params);
  std::ranges::fill(luma, uint8_t{7});  // the converters have their own
  // White: luma 255 of a span of 510 is 128 (127.5 + 0.5), stored as 255 - 64; chroma keeps its middle.
  const Bytes white = Convert(to_yuv, {255, 255, 255}, 3, 1);
  EXPECT_EQ(white, (Bytes{191, 128, 128}));
  // The smallest index with 191 is 128: luma 256. U is one below its middle, trunc(128 / 255 x 446) - 224: blue 253.
  EXPECT_EQ(Convert(back, white, 3, 1), (Bytes{255, 255, 253}));
  // 0 is nearest to 128, index 254: luma 508.
  EXPECT_EQ(Convert(back, {0, 128, 128}, 3, 1), (Bytes{255, 255, 255}));
}

// CIELAB in doubles, with the constants of the formulas.
std::array<double, 3> LabOf(const uint8_t* rgb) {
  const auto linear = [](uint8_t byte) { return std::pow(byte / 255.0, 1 / 0.45); };
  const double r = linear(rgb[0]), g = linear(rgb[1]), b = linear(rgb[2]);
  const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.7867 * t + 16.0 / 116; };
  const double fx = f((0.4124529957771301 * r + 0.3575800061225891 * g + 0.18042300641536713 * b) / 0.950166015625);
  const double fy = f(0.21267099678516388 * r + 0.7151600122451782 * g + 0.0721689984202385 * b);
  const double fz =
      f((0.01933399960398674 * r + 0.11919300258159637 * g + 0.9502270221710205 * b) / 1.0876499938964844);
  return {116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)};
}

TEST(LabSettings, CodeByOffsetsAndRanges) {
  const Bytes grid = Grid();
  for (const LabParams& lab : {LabParams{32, 0, 0, 0, 128, 0, 96, -5}, LabParams{32, 0, 10, 120, 100, 300, 120, 250}}) {
    ConversionParams params = Params(METHOD_FORMULA);
    params.pLabParams = &lab;
    const ConverterPtr to_lab = MakeConverter(CS_RGB, CS_LAB, params), back = MakeConverter(CS_LAB, CS_RGB, params);
    const Bytes coded = Convert(to_lab, grid, grid.size(), kGridPixels);
    const Bytes returned = Convert(back, coded, grid.size(), kGridPixels);
    const int32_t ranges[] = {lab.nLRange > 0 ? lab.nLRange : 100, lab.nARange > 0 ? lab.nARange : 170,
                              lab.nBRange > 0 ? lab.nBRange : 200};
    const int32_t offsets[] = {lab.nLOffset, lab.nAOffset, lab.nBOffset};
    int64_t errors = 0;
    for (size_t i = 0; i < grid.size(); i += 3) {
      const auto exact = LabOf(&grid[i]);
      for (size_t c = 0; c < 3; ++c) {
        const double code = std::clamp(exact[c] * 255 / ranges[c] + offsets[c], 0.0, 255.0);
        ASSERT_NEAR(coded[i + c], code, 0.6) << i << ' ' << c;
        errors += std::abs(returned[i + c] - grid[i + c]);
      }
    }
    EXPECT_LT(static_cast<double>(errors) / static_cast<double>(grid.size()), 2) << "the mean error of the way back";
  }
}

// The inverse in doubles: every code of L*, every 5th of a* and b*.
TEST(LabSettings, DecodeWithinOneStepOfTheCalculation) {
  const LabParams lab = {32, 0, 0, 0, 128, 0, 96, 0};
  ConversionParams params = Params(METHOD_FORMULA);
  params.pLabParams = &lab;
  const ConverterPtr to_rgb = MakeConverter(CS_LAB, CS_RGB, params);
  Bytes codes;
  for (int i = 0; i < 256 * 52 * 52; ++i) {
    for (const int code : {i / 2704, i / 52 % 52 * 5, i % 52 * 5}) codes.push_back(static_cast<uint8_t>(code));
  }
  const Bytes rgb = Convert(to_rgb, codes, codes.size(), 256 * 52 * 52);
  const auto t = [](double f) { return f * f * f > 0.008856 ? f * f * f : (f - 16.0 / 116) / 7.7867; };
  for (size_t i = 0; i < codes.size(); i += 3) {
    const double fy = (codes[i] * 100 / 255.0 + 16) / 116, a = (codes[i + 1] - 128) * 170 / 255.0;
    const double b = (codes[i + 2] - 96) * 200 / 255.0;
    const double x = t(fy + a / 500) * 0.950166015625, y = t(fy), z = t(fy - b / 200) * 1.0876499938964844;
    const double linear[] = {3.240478992462158 * x - 1.5371500253677368 * y - 0.49853500723838806 * z,
                             -0.9692559838294983 * x + 1.875991940498352 * y + 0.04155600070953369 * z,
                             0.05564799904823303 * x - 0.20404300093650818 * y + 1.0573110580444336 * z};
    for (size_t c = 0; c < 3; ++c) {
      ASSERT_NEAR(rgb[i + c], std::pow(std::clamp(linear[c], 0.0, 1.0), 0.45) * 255, 0.51) << i << ' ' << c;
    }
  }
}

TEST(ProfileCmyk, KeepsGreysAndReturnsColours) {
  const ConverterPtr to_ycck = MakeConverter(CS_BGR, CS_CMYK_PROFILE), back = MakeConverter(CS_CMYK_PROFILE, CS_BGR);
  const Bytes grid = Grid();
  const Bytes coded = Convert(to_ycck, grid, grid.size() / 3 * 4, kGridPixels);
  const Bytes returned = Convert(back, coded, grid.size(), kGridPixels);
  int worst = 0;
  for (size_t i = 0; i < grid.size(); ++i) worst = std::max(worst, std::abs(returned[i] - grid[i]));
  EXPECT_LE(worst, 2);
  for (const uint8_t grey : Bytes{0, 1, 100, 255}) {
    const Bytes code = Convert(to_ycck, {grey, grey, grey}, 4, 1);
    EXPECT_EQ(code, (Bytes{255, 128, 128, static_cast<uint8_t>(255 - grey)}));
    EXPECT_EQ(Convert(back, code, 3, 1), (Bytes{grey, grey, grey}));
  }
}

TEST(Formulas, ChainedPairsEqualTheirTwoKernels) {
  const uint32_t ids[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14, 15, 128};
  constexpr int32_t kWidth = 1376, kHeight = 12;  // more than one strip, whose rows are 4 or 7
  Bytes source = RandomBytes(size_t{kWidth} * kHeight * 4);
  for (uint8_t& byte : source) byte |= 1;  // no colour of CS_HLS is refused
  for (const uint32_t from : ids) {
    Bytes rgb(kWidth * kHeight * 3);
    ASSERT_EQ(Q_ClrConvertDirect(from, CS_RGB, source.data(), rgb.data(), kWidth, kHeight, 0, 0), SUCCESS);
    for (const uint32_t to : ids) {
      if (from == to) continue;
      SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
      Bytes steps = source, chained(source), by_handle(source);  // what is not written stays
      ASSERT_EQ(Q_ClrConvertDirect(CS_RGB, to, rgb.data(), steps.data(), kWidth, kHeight, 0, 0), SUCCESS);
      EXPECT_EQ(Q_ClrConvertDirect(from, to, source.data(), chained.data(), kWidth, kHeight, 0, 0), SUCCESS);
      EXPECT_EQ(chained, steps);
      const ConverterPtr converter = MakeConverter(from, to);
      EXPECT_EQ(Q_ClrConvert(converter.get(), by_handle.data(), by_handle.data(), kWidth, kHeight, 0, 0), SUCCESS);
      EXPECT_EQ(by_handle, steps) << "over its own source";
    }
  }
}

TEST(Formulas, HlsStopsAtAGreyWithAHue) {
  Bytes source(4 * 3 * 3, 200), target(source.size(), 0xEE);
  source[3 * 5] = 10;     // second line, second pixel
  source[3 * 5 + 2] = 0;  // grey
  EXPECT_EQ(Q_ClrConvertDirect(CS_HLS, CS_RGB, source.data(), target.data(), 4, 3, 0, 0), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_EQ(std::ranges::count(target, 0xEE), 3 * 7) << "the five pixels before it are written, no more";

  Bytes large(3 * 1376 * 12, 200), chained(large.size(), 0xEE);  // in the last strip
  large[large.size() - 1] = 0;
  EXPECT_EQ(Q_ClrConvertDirect(CS_HLS, CS_XYZ, large.data(), chained.data(), 1376, 12, 0, 0), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_EQ(std::ranges::count(chained, 0xEE), std::ssize(chained)) << "on the way through RGB, none";
}

}  // namespace
