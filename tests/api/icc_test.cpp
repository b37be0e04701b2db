// Method 2: the built-in profiles through the colour engine, held against the engine called directly.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "support/converters.h"
#include "support/guarded.h"

namespace {

using namespace qv_test;
using Bytes = std::vector<uint8_t>;

struct IccSpaceFacts {
  uint32_t space, format;
  size_t pixel;
  const char* file;
  size_t file_size;
};
const IccSpaceFacts kRgb = {CS_RGB, 0x40019, 3, "srgb.icc", 3144};
const IccSpaceFacts kBgr = {CS_BGR, 0x40419, 3, "srgb.icc", 3144};
const IccSpaceFacts kCmyk = {CS_CMYK, 0x60021, 4, "cmyk.icc", 725436};
const IccSpaceFacts kCmy = {CS_CMY, 0x50019, 3, "cmy.icc", 102000};
const IccSpaceFacts kLab = {CS_LAB, 0xA0019, 3, "lab.icc", 200182};

cmsHPROFILE OpenBuiltIn(const IccSpaceFacts& facts) {
  std::ifstream file(std::string(QV_RES "/") + facts.file, std::ios::binary);
  const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(bytes.size(), facts.file_size);
  return cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
}

// What the engine itself makes of the pixels.
Bytes Reference(const IccSpaceFacts& from, const IccSpaceFacts& to, const Bytes& source) {
  cmsHPROFILE in = OpenBuiltIn(from), out = OpenBuiltIn(to);
  cmsHTRANSFORM transform = cmsCreateTransform(in, from.format, out, to.format, INTENT_PERCEPTUAL, 0);
  EXPECT_TRUE(transform);
  const size_t pixels = source.size() / from.pixel;
  Bytes target(pixels * to.pixel);
  cmsDoTransform(transform, source.data(), target.data(), static_cast<cmsUInt32Number>(pixels));
  cmsDeleteTransform(transform);
  cmsCloseProfile(in);
  cmsCloseProfile(out);
  return target;
}

const std::pair<IccSpaceFacts, IccSpaceFacts> kPairs[] = {
    {kRgb, kCmyk}, {kBgr, kCmyk}, {kCmyk, kRgb}, {kCmyk, kBgr}, {kRgb, kCmy}, {kBgr, kCmy}, {kCmy, kRgb},
    {kCmy, kBgr},  {kRgb, kLab},  {kBgr, kLab},  {kLab, kRgb},  {kLab, kBgr}, {kRgb, kBgr}, {kBgr, kRgb}};

TEST(BuiltInProfiles, EqualTheEngineCalledDirectly) {
  constexpr int32_t kWidth = 251, kHeight = 64, kPadIn = 5, kPadOut = 2;
  for (const auto& [from, to] : kPairs) {
    SCOPED_TRACE(std::to_string(from.space) + " to " + std::to_string(to.space));
    const ConverterPtr converter = MakeConverter(from.space, to.space, Params(METHOD_ICC));
    ASSERT_TRUE(converter);
    Bytes source = RandomBytes(size_t{kWidth} * kHeight * from.pixel);
    for (size_t i = 0; i < 16 * from.pixel; ++i) source[i] = (i / from.pixel) >> (i % from.pixel) & 1 ? 255 : 0;
    const Bytes expected = Reference(from, to, source);
    Bytes target(expected.size());
    ASSERT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), kWidth, kHeight, 0, 0), SUCCESS);
    EXPECT_EQ(target, expected);

    // Padded lines that end at an inaccessible page give the same pixels and keep what stands between them.
    const size_t in_line = kWidth * from.pixel, out_line = kWidth * to.pixel;
    GuardedBuffer in(kHeight * (in_line + kPadIn) - kPadIn), out(kHeight * (out_line + kPadOut) - kPadOut);
    std::memset(out.data(), 0xEE, out.size());
    for (size_t y = 0; y < kHeight; ++y) std::memcpy(in.data() + y * (in_line + kPadIn), &source[y * in_line], in_line);
    ASSERT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), kWidth, kHeight, kPadIn, kPadOut), SUCCESS);
    for (size_t y = 0; y < kHeight; ++y) {
      const uint8_t* line = out.data() + y * (out_line + kPadOut);
      ASSERT_EQ(std::memcmp(line, &expected[y * out_line], out_line), 0) << "line " << y;
      ASSERT_TRUE(y + 1 == kHeight || (line[out_line] == 0xEE && line[out_line + 1] == 0xEE)) << "padding " << y;
    }
    ASSERT_EQ(Q_ClrConvert(converter.get(), in.data() + 1, out.data(), kWidth, kHeight, kPadIn, kPadOut),
              ERR_BAD_POINTER);

    // In place, and onto the input's second line: as if out of place.
    for (const size_t shift : {size_t{0}, in_line}) {
      if (shift == 0 && from.pixel != to.pixel) continue;
      Bytes buffer(shift + std::max(source.size(), expected.size()));
      std::memcpy(buffer.data(), source.data(), source.size());
      ASSERT_EQ(Q_ClrConvert(converter.get(), buffer.data(), buffer.data() + shift, kWidth, kHeight, 0, 0), SUCCESS);
      EXPECT_EQ(std::memcmp(buffer.data() + shift, expected.data(), expected.size()), 0) << "shift " << shift;
    }
  }
}

TEST(BuiltInProfiles, ServeOnlyTheirSpaces) {
  ColorConverter* handle = nullptr;
  const ConversionParams params = Params(METHOD_ICC);
  for (const uint32_t id : {1u, 3u, 4u, 5u, 8u, 9u, 10u, 13u, 14u, 15u, 128u}) {
    EXPECT_EQ(Q_ClrInit(&handle, CS_RGB, id, &params), ERR_UNSUPPORTED_COLORSPACE) << id;
    EXPECT_EQ(Q_ClrInit(&handle, id, CS_BGR, &params), ERR_UNSUPPORTED_COLORSPACE) << id;
  }
  for (const uint32_t id : {2u, 6u, 7u, 11u, 12u}) {
    EXPECT_TRUE(MakeConverter(CS_RGB, id, params)) << id;
    EXPECT_TRUE(MakeConverter(id, CS_RGB, params)) << id;
  }
}

// CIE 15: L*a*b* of the media white of the profile connection space (D50) relative to another white.
std::array<double, 3> LabOfD50(double x, double z) {
  const auto f = [](double t) { return t > 216.0 / 24389 ? std::cbrt(t) : (24389.0 / 27 * t + 16) / 116; };
  return {100, 500 * (f(0.9642 / x) - 1), 200 * (1 - f(0.8249 / z))};
}

TEST(WhitePoints, RgbWhiteBecomesTheLabOfItsWhites) {
  const struct {
    WhitePointParams record;
    double x, z;
  } kWhites[] = {{{50, 0, 0}, 0.9642, 0.8249},
                 {{60, 9, 9}, 0.9642, 0.8249},
                 {{55, 0, 0}, 0.956543, 0.920264},
                 {{65, 0, 0}, 0.950166, 1.08765},
                 {{75, 0, 0}, 0.94942, 1.22493},
                 {{93, 0, 0}, 0.952988, 1.41274},
                 {{0, 0.4476, 0.4074}, 0.4476 / 0.4074, (1 - 0.4476 - 0.4074) / 0.4074}};
  for (const auto& white : kWhites) {
    SCOPED_TRACE(white.record.nWhitePoint);
    ConversionParams params = Params(METHOD_ICC);
    params.pWhitePoint = &white.record;
    const ConverterPtr to_lab = MakeConverter(CS_RGB, CS_LAB, params), back = MakeConverter(CS_LAB, CS_RGB, params);
    ASSERT_TRUE(to_lab && back);
    Bytes rgb = {255, 255, 255}, lab(3), returned(3);
    ASSERT_EQ(Q_ClrConvert(to_lab.get(), rgb.data(), lab.data(), 1, 1, 0, 0), SUCCESS);
    const auto [l, a, b] = LabOfD50(white.x, white.z);
    EXPECT_NEAR(lab[0], l * 2.55, 1);
    EXPECT_NEAR(lab[1], a + 128, 1);
    EXPECT_NEAR(lab[2], b + 128, 1);
    // Light, weak colours: in darker or stronger ones a step of the 8-bit Lab is more than three of RGB.
    for (int red = 100; red <= 240; red += 20) {
      for (int green = 100; green <= 240; green += 20) {
        for (int blue = 100; blue <= 240; blue += 20) {
          if (std::max({red, green, blue}) - std::min({red, green, blue}) > 60) continue;
          rgb = {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)};
          Q_ClrConvert(to_lab.get(), rgb.data(), lab.data(), 1, 1, 0, 0);
          Q_ClrConvert(back.get(), lab.data(), returned.data(), 1, 1, 0, 0);
          for (size_t i = 0; i < 3; ++i) ASSERT_NEAR(returned[i], rgb[i], 3) << red << ' ' << green << ' ' << blue;
        }
      }
    }
  }
}

TEST(WhitePoints, DoNotTouchTwoRgbSidesAndMustBeChromaticities) {
  const WhitePointParams bluish = {93, 0, 0};
  ConversionParams params = Params(METHOD_ICC);
  params.pWhitePoint = &bluish;
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_BGR, params);
  ASSERT_TRUE(converter);
  const Bytes source = RandomBytes(3 * 500);
  Bytes target(source.size());
  ASSERT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), 500, 1, 0, 0), SUCCESS);
  EXPECT_EQ(target, Reference(kRgb, kBgr, source));

  ColorConverter* handle = nullptr;
  for (const auto& [x, y] : {std::pair{0.3, 0.0},
                             {0.0, 0.5},
                             {1e-200, 0.5},
                             {0.5, 0.5},
                             {-0.1, 0.3},
                             {0.8, 0.3},
                             {NAN, 0.3},
                             {0.3, INFINITY},
                             {0.3, NAN}}) {
    const WhitePointParams impossible = {0, x, y};
    params.pWhitePoint = &impossible;
    EXPECT_EQ(Q_ClrInit(&handle, CS_RGB, CS_LAB, &params), ERR_INV_PARAMETER) << x << ' ' << y;
  }
}

}  // namespace
