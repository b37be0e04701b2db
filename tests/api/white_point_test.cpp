// Reference whites of the profile connection space, held against CIE 15 in double precision.
#include <gtest/gtest.h>

#include <algorithm>
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

// Without profiles the built-in ones, else the caller's.
struct Method {
  Bytes src_profile, dst_profile;
};

Bytes Convert(const Method& method, const IccSide& from, const IccSide& to, const WhitePointParams* white,
              const Bytes& source) {
  const bool built_in = method.src_profile.empty() && method.dst_profile.empty();
  ConversionParams params = Params(built_in ? METHOD_ICC : METHOD_CUSTOM_ICC);
  const IccMemoryProfile src = {0, method.src_profile.data(), static_cast<uint32_t>(method.src_profile.size())};
  const IccMemoryProfile dst = {0, method.dst_profile.data(), static_cast<uint32_t>(method.dst_profile.size())};
  if (!method.src_profile.empty()) params.pSourceProfileMemory = &src;
  if (!method.dst_profile.empty()) params.pDestProfileMemory = &dst;
  params.pWhitePoint = white;
  const size_t pixels = source.size() / from.pixel;
  return Converted(MakeConverter(from.space, to.space, params), source, pixels, pixels * to.pixel);
}

int LargestDifference(const Bytes& a, const Bytes& b) {
  int largest = 0;
  for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

TEST(WhitePoints, AreNamedInSeveralWays) {
  for (const auto& [from, to] : {std::pair{kRgb, kLab}, {kLab, kBgr}, {kCmyk, kRgb}}) {
    for (const Method& method : {Method{}, Method{BuiltInProfile(from), {}}}) {
      SCOPED_TRACE(testing::Message() << from.space << " to " << to.space << method.src_profile.size());
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
  // Sides of one kind have no use for it.
  const WhitePointParams bluish = kWhites[4].Selector();
  const Bytes source = RandomBytes(3 * 500), lab = AlteredProfile(kLab, 0.9);
  EXPECT_EQ(Convert({}, kRgb, kBgr, &bluish, source), Convert({}, kRgb, kBgr, nullptr, source));
  EXPECT_EQ(Convert({lab, {}}, kLab, kLab, &bluish, source), Convert({lab, {}}, kLab, kLab, nullptr, source));
}

uint8_t ToByte(double value) { return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0))); }

// By the built-in RGB profile without rounding or tables.
Bytes ExactLab(const Bytes& rgb, const cmsCIEXYZ& white) {
  cmsHPROFILE profile = OpenProfile(BuiltInProfile(kRgb)), xyz = cmsCreateXYZProfile();
  cmsHTRANSFORM transform =
      cmsCreateTransform(profile, TYPE_RGB_8, xyz, TYPE_XYZ_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
  std::vector<cmsCIEXYZ> colours(rgb.size() / 3);
  cmsDoTransform(transform, rgb.data(), colours.data(), static_cast<cmsUInt32Number>(colours.size()));
  cmsDeleteTransform(transform);
  for (cmsHPROFILE used : {profile, xyz}) cmsCloseProfile(used);
  Bytes lab;
  for (const cmsCIEXYZ& colour : colours) {
    cmsCIELab value;
    cmsXYZ2Lab(&white, &value, &colour);
    for (const double sample : {value.L * 2.55, value.a + 128, value.b + 128}) lab.push_back(ToByte(sample));
  }
  return lab;
}

// The engine's precalculated grid from Lab, the same with every white, costs far more than the rounding to bytes: the
// bound of the way back is the grid's, measured with D50.
TEST(WhitePoints, GiveTheLabOfCie15AndReturn) {
  Bytes rgb;  // all colours of five bits per channel
  for (int i = 0; i < 1 << 15; ++i) {
    for (const int shift : {10, 5, 0}) rgb.push_back(static_cast<uint8_t>(((i >> shift & 31) * 255 + 15) / 31));
  }
  for (const White& white : kWhites) {
    SCOPED_TRACE(white.selector);
    const WhitePointParams record = white.Selector();
    const Bytes lab = Convert({}, kRgb, kLab, &record, rgb);
    EXPECT_LE(LargestDifference(lab, ExactLab(rgb, white.xyz)), 1);
    Bytes light, light_lab;
    for (size_t i = 0; i < rgb.size(); i += 3) {
      const auto [least, most] = std::minmax({rgb[i], rgb[i + 1], rgb[i + 2]});
      if (least < 100 || most - least > 60) continue;
      light.insert(light.end(), &rgb[i], &rgb[i] + 3);
      light_lab.insert(light_lab.end(), &lab[i], &lab[i] + 3);
    }
    EXPECT_LE(LargestDifference(light, Convert({}, kLab, kRgb, &record, light_lab)), 7);
  }
}

// Black points are compensated on the way through a white exactly when they are without one.
TEST(WhitePoints, LeaveBlackPointsAsTheyAre) {
  const WhitePointParams d50 = kWhites[0].Chromaticity();
  const Bytes source = RandomBytes(4 * 600);
  for (const uint8_t rgb_version : Bytes{2, 4}) {
    for (const uint8_t cmyk_version : Bytes{2, 4}) {
      SCOPED_TRACE(testing::Message() << "RGB " << int{rgb_version} << ", CMYK " << int{cmyk_version});
      Bytes rgb = BuiltInProfile(kRgb), cmyk = AlteredProfile(kCmyk, 1, cmyk_version + 0.3);
      rgb[8] = rgb_version;
      for (const auto& [from, to] : {std::pair(kCmyk, kRgb), {kRgb, kCmyk}}) {
        const Method method = from.space == CS_CMYK ? Method{cmyk, rgb} : Method{rgb, cmyk};
        EXPECT_LE(
            LargestDifference(Convert(method, from, to, nullptr, source), Convert(method, from, to, &d50, source)), 1);
      }
    }
  }
}

TEST(WhitePoints, MustBeChromaticities) {
  const Bytes profile = BuiltInProfile(kRgb);
  const IccMemoryProfile memory = {0, profile.data(), static_cast<uint32_t>(profile.size())};
  for (const uint32_t method : {METHOD_ICC, METHOD_CUSTOM_ICC}) {
    ConversionParams params = Params(method);
    params.pSourceProfileMemory = &memory;
    const std::pair<double, double> kImpossible[] = {{0.3, 0},   {0, 0.5},   {1e-200, 0.5},   {0.5, 0.5}, {-0.1, 0.3},
                                                     {0.8, 0.3}, {NAN, 0.3}, {0.3, INFINITY}, {0.3, NAN}};
    for (const auto& [x, y] : kImpossible) {
      const WhitePointParams impossible = {0, x, y};
      params.pWhitePoint = &impossible;
      EXPECT_EQ(InitStatus(CS_RGB, CS_LAB, params), ERR_INV_PARAMETER) << x << ' ' << y;
    }
  }
}

}  // namespace
