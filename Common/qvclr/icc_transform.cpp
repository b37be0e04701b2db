#include "qvclr/icc_transform.h"

#include "base/memory.h"
#include "base/module.h"
#include "qvclr/icc_engine.h"
#include "qvclr/library.h"
#include "qvclr/spaces.h"
#include "qvclr/white_point.h"

namespace qv {
namespace {

// Null unless the profile is of the colour space of its side's pixels.
EngineProfile OpenProfile(cmsContext context, const IccSide& side) {
  if (side.profile.empty() || side.profile.size() > UINT32_MAX) return nullptr;
  EngineProfile profile(
      cmsOpenProfileFromMemTHR(context, side.profile.data(), static_cast<cmsUInt32Number>(side.profile.size())));
  if (!profile) return nullptr;
  const int of_profile = _cmsLCMScolorSpace(cmsGetColorSpace(profile.get()));
  return of_profile == static_cast<int>(T_COLORSPACE(side.space->icc_format)) ? std::move(profile) : nullptr;
}

cmsHTRANSFORM Link(cmsContext context, const IccSide& in, const EngineProfile& in_profile, const IccSide& out,
                   const EngineProfile& out_profile, const EngineProfile& white) {
  if (!white) {
    return cmsCreateTransformTHR(context, in_profile.get(), in.space->icc_format, out_profile.get(),
                                 out.space->icc_format, INTENT_PERCEPTUAL, 0);
  }
  // The engine would pin the source's white to the destination's; here they are meant to differ.
  cmsHPROFILE chain[] = {in_profile.get(), white.get(), out_profile.get()};
  return cmsCreateMultiprofileTransformTHR(context, chain, 3, in.space->icc_format, out.space->icc_format,
                                           INTENT_PERCEPTUAL, cmsFLAGS_NOWHITEONWHITEFIXUP);
}

}  // namespace

Status IccTransform::Make(const IccSide& in, const IccSide& out, const WhitePointParams& white, IccTransform** made) {
  auto result = New<IccTransform>();
  EngineContext context = MakeEngineContext();
  if (!result || !context) return kNoMemory;
  const EngineProfile in_profile = OpenProfile(context.get(), in);
  const EngineProfile out_profile = OpenProfile(context.get(), out);
  if (!in_profile || !out_profile) return kProfileOpen;

  EngineProfile white_profile;
  if (!IsRgb(*in.space) || !IsRgb(*out.space)) {
    std::optional<cmsCIEXYZ> xyz;
    if (const Status status = WhiteOf(white, &xyz); !Ok(status)) return status;
    const auto direction = IsRgb(*in.space) ? WhiteDirection::kToWhite : WhiteDirection::kFromWhite;
    if (xyz) white_profile = MakeWhitePointProfile(context.get(), *xyz, direction);
    if (xyz && !white_profile) return kNoMemory;
  }
  result->transform_ = Link(context.get(), in, in_profile, out, out_profile, white_profile);
  if (!result->transform_) return kProfileOpen;
  result->context_ = context.release();
  *made = result.release();
  return kSuccess;
}

void IccTransform::Delete(IccTransform* transform) {
  if (!transform) return;
  cmsDeleteTransform(transform->transform_);
  cmsDeleteContext(static_cast<cmsContext>(transform->context_));
  Release(transform);
}

void IccTransform::Run(const uint8_t* src, uint8_t* dst, size_t pixels) const {
  cmsDoTransform(transform_, src, dst, static_cast<cmsUInt32Number>(pixels));
}

Status FindBuiltInProfile(const Space& space, std::span<const uint8_t>* profile) {
  return FindModuleResource(TheLibrary().resource_module.load(), "ICM", space.icc_profile, profile);
}

}  // namespace qv
