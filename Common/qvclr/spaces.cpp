#include "qvclr/spaces.h"

#include <lcms2.h>

#include "qvclr/kernels/kernels.h"

namespace qv {
namespace {

constexpr uint32_t kSrgbProfile = 105, kLabProfile = 106, kCmykProfile = 107, kCmyProfile = 110;

constexpr Space kSpaces[] = {
    {CS_RGB, "CS_RGB", "R G B", 24, SizeRule::kNone, &RGBToBGR, &BGRToRGB, TYPE_RGB_8, 3, kSrgbProfile},
    {CS_YUV, "CS_YUV", "Y U V", 24, SizeRule::kNone, nullptr, nullptr},
    {CS_CMYK, "CS_CMYK", "C M Y K", 32, SizeRule::kNone, &CMYKToRGB, &RGBToCMYK, TYPE_CMYK_8, 4, kCmykProfile},
    {CS_HSV, "CS_HSV", "H S V", 24, SizeRule::kNone, nullptr, nullptr},
    {CS_HLS, "CS_HLS", "H L S", 24, SizeRule::kNone, nullptr, nullptr},
    {CS_YIQ, "CS_YIQ", "Y I Q", 24, SizeRule::kNone, nullptr, nullptr},
    {CS_CMY, "CS_CMY", "C M Y", 24, SizeRule::kNone, &CMYToRGB, &RGBToCMY, TYPE_CMY_8, 3, kCmyProfile},
    {CS_LAB, "CS_LAB", "L a b", 24, SizeRule::kNone, nullptr, nullptr, TYPE_Lab_8, 3, kLabProfile},
    {CS_XYZ, "CS_XYZ", "X Y Z", 24, SizeRule::kNone, nullptr, nullptr},
    {CS_YUY2, "CS_YUY2", "Y0 U Y1 V", 16, SizeRule::kWidthEven, nullptr, nullptr},
    {.id = CS_YVU9,
     .name = "CS_YVU9",
     .layout = "Y plane, V plane, U plane",
     .bits = 9,
     .rule = SizeRule::kBothOf4,
     .to_rgb = nullptr,
     .from_rgb = nullptr,
     .planar = true},
    {CS_CMYK_PROFILE, "CS_CMYK_PROFILE", "Y Cb Cr K", 32, SizeRule::kNone, nullptr, nullptr},
    {CS_BGR, "CS_BGR", "B G R", 24, SizeRule::kNone, &BGRToRGB, &RGBToBGR, TYPE_BGR_8, 3, kSrgbProfile},
    {CS_Y41P, "CS_Y41P", "U0 Y0 V0 Y1 U4 Y2 V4 Y3 Y4 Y5 Y6 Y7", 12, SizeRule::kWidthOf8, nullptr, nullptr},
    {CS_UYVY, "CS_UYVY", "U Y0 V Y1", 16, SizeRule::kWidthEven, nullptr, nullptr},
    {CS_YCBCR, "CS_YCBCR", "Y Cb Cr", 24, SizeRule::kNone, nullptr, nullptr},
    {CS_HSI, "CS_HSI", "I H S", 24, SizeRule::kNone, nullptr, nullptr},
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
