#include "qvclr/spaces.h"

#include <lcms2.h>

#include "qvclr/kernels/kernels.h"

namespace qv {
namespace {

constexpr uint32_t kSrgbProfile = 105, kLabProfile = 106, kCmykProfile = 107, kCmyProfile = 110;

// Between CS_RGB and CS_BGR the source's kernel serves.
constexpr Space kSpaces[] = {
    {CS_RGB, "CS_RGB", 24, SizeRule::kNone, &RGBToBGR, &BGRToRGB, TYPE_RGB_8, kSrgbProfile},
    {CS_YUV, "CS_YUV", 24, SizeRule::kNone, &YUVToRGB, &RGBToYUV},
    {CS_CMYK, "CS_CMYK", 32, SizeRule::kNone, &CMYKToRGB, &RGBToCMYK, TYPE_CMYK_8, kCmykProfile},
    {CS_HSV, "CS_HSV", 24, SizeRule::kNone, &HSVToRGB, &RGBToHSV},
    {CS_HLS, "CS_HLS", 24, SizeRule::kNone, &HLSToRGB, &RGBToHLS},
    {CS_YIQ, "CS_YIQ", 24, SizeRule::kNone, &YIQToRGB, &RGBToYIQ},
    {CS_CMY, "CS_CMY", 24, SizeRule::kNone, &CMYToRGB, &RGBToCMY, TYPE_CMY_8, kCmyProfile},
    {CS_LAB, "CS_LAB", 24, SizeRule::kNone, &LabToRGB, &RGBToLab, TYPE_Lab_8, kLabProfile},
    {CS_XYZ, "CS_XYZ", 24, SizeRule::kNone, &XYZToRGB, &RGBToXYZ},
    {CS_YUY2, "CS_YUY2", 16, SizeRule::kWidthEven, &YUY2ToRGB, &RGBToYUY2},
    {CS_YVU9, "CS_YVU9", 9, SizeRule::kBothOf4, &YVU9ToRGB, &RGBToYVU9, 0, 0, true},
    {CS_CMYK_PROFILE, "CS_CMYK_PROFILE", 32, SizeRule::kNone, &CMYKProfileToRGB, &RGBToCMYKProfile},
    {CS_BGR, "CS_BGR", 24, SizeRule::kNone, &BGRToRGB, &RGBToBGR, TYPE_BGR_8, kSrgbProfile},
    {CS_Y41P, "CS_Y41P", 12, SizeRule::kWidthOf8, &Y41PToRGB, &RGBToY41P},
    {CS_UYVY, "CS_UYVY", 16, SizeRule::kWidthEven, &UYVYToRGB, &RGBToUYVY},
    {CS_YCBCR, "CS_YCBCR", 24, SizeRule::kNone, &YCbCrToRGB, &RGBToYCbCr},
    {CS_HSI, "CS_HSI", 24, SizeRule::kNone, &HSIToRGB, &RGBToHSI},
};

}  // namespace

std::span<const Space> AllSpaces() { return kSpaces; }

const Space* FindSpace(uint32_t id) {
  for (const Space& space : kSpaces) {
    if (space.id == id) return &space;
  }
  return nullptr;
}

Status CheckSize(const Space& space, int32_t width, int32_t height) {
  switch (space.rule) {
    case SizeRule::kNone: return kSuccess;
    case SizeRule::kWidthEven: return width % 2 == 0 ? kSuccess : kInvalidWidthAlignment;
    case SizeRule::kWidthOf8: return width % 8 == 0 ? kSuccess : kInvalidWidthAlignment;
    case SizeRule::kBothOf4: return width % 4 == 0 && height % 4 == 0 ? kSuccess : kInvalidYuv9Size;
  }
  return kSuccess;
}

}  // namespace qv
