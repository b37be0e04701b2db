// Reference whites of the profile connection space, held against CIE 15 in double precision.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/converters.h"
#include "support/icc_reference.h"

namespace {

using namespace qv_test;

struct White {
  uint32_t selector;
  cmsCIEXYZ xyz;

  WhitePointParams Selector() const { return {selector, 0, 0}; }
  WhitePointParams Chromaticity() const {
    const double sum = xyz.X + xyz.Y + xyz.Z;
    return {0, xyz.X / sum, xyz.Y / sum};
  }
};
constexpr White kWhites[] = {{50, {0.964294, 1, 0.825104}},
                             {55, {0.956543, 1, 0.920264}},
                             {65, {0.950166, 1, 1.08765}},
                             {75, {0.94942, 1, 1.22493}},
                             {93, {0.952988, 1, 1.41274}}};

// Both methods, the second by the built-in RGB profile as the caller's own.
struct Method {
  uint32_t id;
  Bytes profile;
};
std::array<Method, 2> BothMethods() { return {{{METHOD_ICC, {}}, {METHOD_CUSTOM_ICC, BuiltInProfile(kRgb)}}}; }

Bytes Convert(const Method& method, const IccSide& from, const IccSide& to, const WhitePointParams* white,
              const Bytes& source) {
  ConversionParams params = Params(method.id);
  const IccMemoryProfile memory = {0, method.profile.data(), static_cast<uint32_t>(method.profile.size())};
  if (!method.profile.empty()) (IsRgb(from) ? params.pSourceProfileMemory : params.pDestProfileMemory) = &memory;
  params.pWhitePoint = white;
  const ConverterPtr converter = MakeConverter(from.space, to.space, params);
  const auto pixels = static_cast<int32_t>(source.size() / from.pixel);
  Bytes target(source.size() / from.pixel * to.pixel);
  EXPECT_TRUE(converter);
  EXPECT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), pixels, 1, 0, 0), SUCCESS);
  return target;
}

int LargestDifference(const Bytes& a, const Bytes& b) {
  int largest = 0;
  for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

TEST(WhitePoints, AreNamedInSeveralWays) {
  for (const Method& method : BothMethods()) {
    for (const auto& [from, to] : {std::pair{kRgb, kLab}, {kLab, kBgr}, {kCmyk, kRgb}}) {
      SCOPED_TRACE(testing::Message() << from.space << " to " << to.space << ", method " << method.id);
      const Bytes source = RandomBytes(from.pixel * 500), plain = Convert(method, from, to, nullptr, source);
      for (const uint32_t selector : {60u, UINT32_MAX}) {
        const WhitePointParams d50 = {selector, 0.3, 0};
        EXPECT_EQ(Convert(method, from, to, &d50, source), plain) << selector;
      }
      for (const White& white : kWhites) {
        const WhitePointParams selector = white.Selector(), chromaticity = white.Chromaticity();
        const Bytes selected = Convert(method, from, to, &selector, source);
        const Bytes custom = Convert(method, from, to, &chromaticity, source);
        EXPECT_EQ(selected == plain, white.selector == 50);
        EXPECT_LE(LargestDifference(custom, selected), white.selector == 50 ? 1 : 0) << white.selector;
      }
    }
  }
}

// All colours of five bits per channel.
Bytes ColourGrid() {
  Bytes rgb;
  for (int i = 0; i < 1 << 15; ++i) {
    for (const int shift : {10, 5, 0}) rgb.push_back(static_cast<uint8_t>(((i >> shift & 31) * 255 + 15) / 31));
  }
  return rgb;
}

uint8_t ToByte(double value) { return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0))); }

// The built-in RGB profile without rounding or tables.
class ExactRgb {
 public:
  ExactRgb() : rgb_(OpenProfile(BuiltInProfile(kRgb))), xyz_(cmsCreateXYZProfile()) {}
  ~ExactRgb() {
    cmsCloseProfile(rgb_);
    cmsCloseProfile(xyz_);
  }
  ExactRgb(const ExactRgb&) = delete;
  ExactRgb& operator=(const ExactRgb&) = delete;

  Bytes LabOf(const Bytes& rgb, const cmsCIEXYZ& white) const {
    Bytes lab;
    std::vector<cmsCIEXYZ> colours(rgb.size() / 3);
    Run(rgb_, TYPE_RGB_8, xyz_, TYPE_XYZ_DBL, rgb.data(), colours.data(), colours.size());
    for (const cmsCIEXYZ& colour : colours) {
      cmsCIELab value;
      cmsXYZ2Lab(&white, &value, &colour);
      for (const double sample : {value.L * 2.55, value.a + 128, value.b + 128}) lab.push_back(ToByte(sample));
    }
    return lab;
  }

  Bytes RgbOf(const Bytes& lab, const cmsCIEXYZ& white) const {
    std::vector<cmsCIEXYZ> colours(lab.size() / 3);
    for (size_t i = 0; i < colours.size(); ++i) {
      const cmsCIELab value = {lab[3 * i] / 2.55, lab[3 * i + 1] - 128.0, lab[3 * i + 2] - 128.0};
      cmsLab2XYZ(&white, &colours[i], &value);
    }
    std::vector<double> exact(lab.size());
    Run(xyz_, TYPE_XYZ_DBL, rgb_, TYPE_RGB_DBL, colours.data(), exact.data(), colours.size());
    Bytes rgb;
    for (const double sample : exact) rgb.push_back(ToByte(sample * 255));
    return rgb;
  }

 private:
  static void Run(cmsHPROFILE from, uint32_t from_format, cmsHPROFILE to, uint32_t to_format, const void* source,
                  void* target, size_t pixels) {
    cmsHTRANSFORM transform =
        cmsCreateTransform(from, from_format, to, to_format, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    cmsDoTransform(transform, source, target, static_cast<cmsUInt32Number>(pixels));
    cmsDeleteTransform(transform);
  }

  cmsHPROFILE rgb_, xyz_;
};

// The engine's precalculated grid from Lab, the same with every white, costs far more than the rounding to bytes: the
// bounds of the way back are the grid's, measured with D50.
TEST(WhitePoints, GiveTheLabOfCie15AndReturn) {
  const ExactRgb exact;
  const Bytes rgb = ColourGrid();
  for (const Method& method : BothMethods()) {
    for (const White& white : kWhites) {
      SCOPED_TRACE(testing::Message() << white.selector << ", method " << method.id);
      const WhitePointParams record = white.Selector();
      const Bytes lab = Convert(method, kRgb, kLab, &record, rgb), wanted = exact.LabOf(rgb, white.xyz);
      EXPECT_LE(LargestDifference(lab, wanted), 1);

      const Bytes returned = Convert(method, kLab, kRgb, &record, lab), ideal = exact.RgbOf(wanted, white.xyz);
      int light_colours = 0, largest = 0, largest_of_ideal = 0, more_than_two = 0;
      for (size_t i = 0; i < rgb.size(); i += 3) {
        const auto [least, most] = std::minmax({rgb[i], rgb[i + 1], rgb[i + 2]});
        if (least < 100 || most - least > 60) continue;
        const auto error = [&](const Bytes& of) {
          return std::max(
              {std::abs(of[i] - rgb[i]), std::abs(of[i + 1] - rgb[i + 1]), std::abs(of[i + 2] - rgb[i + 2])});
        };
        ++light_colours;
        largest = std::max(largest, error(returned));
        largest_of_ideal = std::max(largest_of_ideal, error(ideal));
        more_than_two += error(returned) > 2;
      }
      EXPECT_LE(largest_of_ideal, 2);
      EXPECT_LE(largest, 7);
      EXPECT_LE(more_than_two, light_colours / 20);
    }
  }
}

// Black points are compensated on the way through a white exactly when they are without one.
TEST(WhitePoints, LeaveBlackPointsAsTheyAre) {
  for (const double rgb_version : {2.4, 4.3}) {
    for (const double cmyk_version : {2.4, 4.3}) {
      SCOPED_TRACE(testing::Message() << "RGB " << rgb_version << ", CMYK " << cmyk_version);
      cmsHPROFILE srgb = OpenProfile(BuiltInProfile(kRgb));
      cmsSetProfileVersion(srgb, rgb_version);
      cmsUInt32Number size = kRgb.file_size;
      Bytes rgb(size), cmyk = AlteredProfile(kCmyk, 1, cmyk_version);
      ASSERT_TRUE(cmsSaveProfileToMem(srgb, rgb.data(), &size));
      cmsCloseProfile(srgb);
      const IccMemoryProfile rgb_memory = {0, rgb.data(), size};
      const IccMemoryProfile cmyk_memory = {0, cmyk.data(), static_cast<uint32_t>(cmyk.size())};
      const WhitePointParams d50 = kWhites[0].Chromaticity();
      for (const bool to_rgb : {true, false}) {
        const Bytes source = RandomBytes(4 * 600);
        Bytes target[2];
        for (const WhitePointParams* white : {static_cast<const WhitePointParams*>(nullptr), &d50}) {
          ConversionParams params = Params(METHOD_CUSTOM_ICC);
          params.pSourceProfileMemory = to_rgb ? &cmyk_memory : &rgb_memory;
          params.pDestProfileMemory = to_rgb ? &rgb_memory : &cmyk_memory;
          params.pWhitePoint = white;
          const ConverterPtr converter = MakeConverter(to_rgb ? CS_CMYK : CS_RGB, to_rgb ? CS_RGB : CS_CMYK, params);
          ASSERT_TRUE(converter);
          target[white != nullptr].resize(4 * 600);
          Q_ClrConvert(converter.get(), source.data(), target[white != nullptr].data(), 600, 1, 0, 0);
        }
        EXPECT_LE(LargestDifference(target[0], target[1]), 1) << (to_rgb ? "to RGB" : "to CMYK");
      }
    }
  }
}

TEST(WhitePoints, DoNotTouchEqualKindsOfSides) {
  const WhitePointParams bluish = kWhites[4].Selector();
  const Method built_in = {METHOD_ICC, {}};
  const Bytes source = RandomBytes(3 * 500);
  EXPECT_EQ(Convert(built_in, kRgb, kBgr, &bluish, source), Convert(built_in, kRgb, kBgr, nullptr, source));
  const Method custom = {METHOD_CUSTOM_ICC, AlteredProfile(kLab, 0.9)};
  EXPECT_EQ(Convert(custom, kLab, kLab, &bluish, source), Convert(custom, kLab, kLab, nullptr, source));
}

TEST(WhitePoints, MustBeChromaticities) {
  const Bytes profile = BuiltInProfile(kRgb);
  const IccMemoryProfile memory = {0, profile.data(), static_cast<uint32_t>(profile.size())};
  for (const uint32_t method : {METHOD_ICC, METHOD_CUSTOM_ICC}) {
    ConversionParams params = Params(method);
    params.pSourceProfileMemory = &memory;
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
      ColorConverter* handle = nullptr;
      EXPECT_EQ(Q_ClrInit(&handle, CS_RGB, CS_LAB, &params), ERR_INV_PARAMETER) << x << ' ' << y;
    }
  }
}

}  // namespace
