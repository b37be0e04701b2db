#include "qvclr/white_point.h"

#include <cmath>

namespace qv {

Status WhiteOf(const WhitePointParams& params, cmsCIEXYZ* white) {
  switch (params.nWhitePoint) {
    case 55: *white = {0.956543, 1.0, 0.920264}; return kSuccess;
    case 65: *white = {0.950166, 1.0, 1.08765}; return kSuccess;
    case 75: *white = {0.94942, 1.0, 1.22493}; return kSuccess;
    case 93: *white = {0.952988, 1.0, 1.41274}; return kSuccess;
    case 0: break;
    default: *white = {0.964294, 1.0, 0.825104}; return kSuccess;
  }
  const double x = params.x, y = params.y;
  if (y == 0) return kInvalidParameter;
  *white = {x / y, 1.0, (1 - x - y) / y};
  const bool possible = std::isfinite(white->X) && std::isfinite(white->Z) && white->X >= 0 && white->Z >= 0;
  return possible ? kSuccess : kInvalidParameter;
}

EngineProfile MakeWhitePointProfile(cmsContext context, const cmsCIEXYZ& white, WhiteDirection direction) {
  const cmsCIEXYZ& d50 = *cmsD50_XYZ();
  const bool to_white = direction == WhiteDirection::kToWhite;
  const auto scale = [&](double of_d50, double of_white) { return to_white ? of_d50 / of_white : of_white / of_d50; };
  const double matrix[9] = {scale(d50.X, white.X), 0, 0, 0, 1, 0, 0, 0, scale(d50.Z, white.Z)};

  EngineProfile profile(cmsCreateProfilePlaceholder(context));
  EnginePipeline pipeline(cmsPipelineAlloc(context, 3, 3));
  if (!profile || !pipeline) return nullptr;
  // Version 2: a perceptual transform through it must not ask for black-point compensation.
  cmsSetProfileVersion(profile.get(), 2.4);
  cmsSetDeviceClass(profile.get(), cmsSigAbstractClass);
  cmsSetColorSpace(profile.get(), cmsSigXYZData);
  cmsSetPCS(profile.get(), cmsSigXYZData);
  const bool complete =
      cmsPipelineInsertStage(pipeline.get(), cmsAT_END, cmsStageAllocMatrix(context, 3, 3, matrix, nullptr)) &&
      cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline.get());
  return complete ? std::move(profile) : nullptr;
}

}  // namespace qv
