#include "qvclr/white_point.h"

#include <cmath>

namespace qv {

namespace {

struct Illuminant {
  uint32_t selector;
  double x, z;  // XYZ with Y = 1
};
constexpr Illuminant kIlluminants[] = {
    {55, 0.956543, 0.920264}, {65, 0.950166, 1.08765}, {75, 0.94942, 1.22493}, {93, 0.952988, 1.41274}};

// The engine reckons in single precision: both ways must stay numbers there.
bool CanRescale(double component) {
  const auto value = static_cast<float>(component);
  return std::isnormal(value) && value > 0 && std::isnormal(1 / value);
}

}  // namespace

Status WhiteOf(const WhitePointParams& params, WhitePoint* white) {
  white->reset();
  for (const Illuminant& illuminant : kIlluminants) {
    if (illuminant.selector == params.nWhitePoint) *white = {illuminant.x, 1.0, illuminant.z};
  }
  if (params.nWhitePoint != 0) return kSuccess;
  const double x = params.x, y = params.y;
  if (y == 0) return kInvalidParameter;
  *white = {x / y, 1.0, (1 - x - y) / y};
  return CanRescale((*white)->X) && CanRescale((*white)->Z) ? kSuccess : kInvalidParameter;
}

cmsHPROFILE MakeWhitePointProfile(cmsContext context, const cmsCIEXYZ& white, WhiteDirection direction,
                                  cmsHPROFILE next) {
  const cmsCIEXYZ& d50 = *cmsD50_XYZ();
  const bool to_white = direction == WhiteDirection::kToWhite;
  const auto scale = [&](double of_d50, double of_white) { return to_white ? of_d50 / of_white : of_white / of_d50; };
  const double matrix[9] = {scale(d50.X, white.X), 0, 0, 0, 1, 0, 0, 0, scale(d50.Z, white.Z)};

  cmsHPROFILE profile = cmsCreateProfilePlaceholder(context);
  // From version 4 on, a perceptual transform compensates black points up to the profile; this one's black is 0, so the
  // step into it must do as the step out of it does.
  cmsSetProfileVersion(profile, cmsGetEncodedICCversion(next) < 0x4000000 ? 2.4 : 4.3);
  cmsSetDeviceClass(profile, cmsSigAbstractClass);
  cmsSetColorSpace(profile, cmsSigXYZData);
  cmsSetPCS(profile, cmsSigXYZData);
  cmsPipeline* pipeline = cmsPipelineAlloc(context, 3, 3);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocMatrix(context, 3, 3, matrix, nullptr));
  cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return profile;
}

}  // namespace qv
