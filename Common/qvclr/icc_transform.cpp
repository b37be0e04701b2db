#include "qvclr/icc_transform.h"

#include "base/memory.h"
#include "base/module.h"
#include "qvclr/icc_capture.h"
#include "qvclr/icc_engine.h"
#include "qvclr/icc_shared.h"
#include "qvclr/library.h"
#include "qvclr/spaces.h"
#include "qvclr/white_point.h"

namespace qv {
namespace {

// Null unless the profile is of the colour space of its side's pixels.
cmsHPROFILE OpenProfile(cmsContext context, const IccSide& side) {
  if (side.profile.empty() || side.profile.size() > kLargestEngineBlock) return nullptr;
  cmsHPROFILE profile =
      cmsOpenProfileFromMemTHR(context, side.profile.data(), static_cast<cmsUInt32Number>(side.profile.size()));
  if (!profile) return nullptr;
  const int of_profile = _cmsLCMScolorSpace(cmsGetColorSpace(profile));
  return of_profile == static_cast<int>(T_COLORSPACE(side.space->icc_format)) ? profile : nullptr;
}

cmsHTRANSFORM Link(cmsContext context, const IccSide& in, cmsHPROFILE in_profile, const IccSide& out,
                   cmsHPROFILE out_profile, cmsHPROFILE white) {
  if (!white) {
    return cmsCreateTransformTHR(context, in_profile, in.space->icc_format, out_profile, out.space->icc_format,
                                 INTENT_PERCEPTUAL, 0);
  }
  // The engine would pin the source's white to the destination's; here they are meant to differ.
  cmsHPROFILE chain[] = {in_profile, white, out_profile};
  return cmsCreateMultiprofileTransformTHR(context, chain, 3, in.space->icc_format, out.space->icc_format,
                                           INTENT_PERCEPTUAL, cmsFLAGS_NOWHITEONWHITEFIXUP);
}

// Leaves to the engine what it holds when it fails.
Status MakeInEngine(cmsContext context, const IccSide& in, const IccSide& out, const WhitePoint& white_point,
                    IccGrid* grid, IccShaper* shaper, void** transform) {
  PrepareCapture(context);
  cmsHPROFILE in_profile = OpenProfile(context, in);
  cmsHPROFILE out_profile = OpenProfile(context, out);
  if (!in_profile || !out_profile) return kProfileOpen;
  cmsHPROFILE white = nullptr;
  if (white_point) {
    const auto direction = IsRgb(*in.space) ? WhiteDirection::kToWhite : WhiteDirection::kFromWhite;
    white = MakeWhitePointProfile(context, *white_point, direction, out_profile);
  }
  Engine::Of(context).shaper = shaper;
  *transform = Link(context, in, in_profile, out, out_profile, white);
  Engine::Of(context).shaper = nullptr;
  for (cmsHPROFILE profile : {in_profile, out_profile, white}) cmsCloseProfile(profile);
  if (!*transform) return kProfileOpen;
  grid->swaps_input = T_DOSWAP(in.space->icc_format) != 0;
  grid->swaps_output = T_DOSWAP(out.space->icc_format) != 0;
  if (shaper) {
    shaper->swaps_input = grid->swaps_input;
    shaper->swaps_output = grid->swaps_output;
    CaptureShaper(*transform, shaper);
    if (shaper->kind != IccShaper::Kind::kNone) return kSuccess;
  }
  return CaptureGrid(context, *transform, grid);
}

}  // namespace

Status IccTransform::Make(const IccSide& in, const IccSide& out, const WhitePoint& white, IccTransform** made) {
  auto result = New<IccTransform>();
  EngineOwner engine(Engine::Open());
  const bool may_be_shaper = IsRgb(*in.space) && IsRgb(*out.space);
  Owned<IccShaper> shaper = may_be_shaper ? New<IccShaper>() : nullptr;
  if (!result || !engine || (may_be_shaper && !shaper)) return kNoMemory;
  const Status status = Engine::Enter([&] {
    return MakeInEngine(engine->context(), in, out, white, &result->grid_, shaper.get(), &result->transform_);
  });
  if (!Ok(status)) {
    EmptyGrid(&result->grid_);
    return status;
  }
  if (shaper && shaper->kind != IccShaper::Kind::kNone) {
    result->shaper_ = shaper.release();
  } else if (!result->grid_.quads) {
    result->engine_ = engine.release();
  }
  result->holders_ = 1;
  *made = result.release();
  return kSuccess;
}

IccTransform* IccTransform::Hold() {
  const SectionGuard guard(TheLibrary().section);
  ++holders_;
  return this;
}

void IccTransform::Delete(IccTransform* transform) {
  if (!transform) return;
  const SectionGuard guard(TheLibrary().section);
  if (--transform->holders_ > 0) return TheLibrary().shared_transforms.Trim(kept_transforms.load());
  EmptyGrid(&transform->grid_);
  Release(transform->shaper_);
  Engine::Close(transform->engine_);
  Release(transform);
}

void IccTransform::Run(const uint8_t* src, uint8_t* dst, size_t pixels) const {
  if (grid_.quads) return GridRow(grid_, src, dst, pixels);
  if (shaper_) return ShaperRow(*shaper_, src, dst, pixels);
  cmsDoTransform(transform_, src, dst, static_cast<cmsUInt32Number>(pixels));
}

Status FindBuiltInProfile(const Space& space, std::span<const uint8_t>* profile) {
  return FindModuleResource(TheLibrary().resource_module.load(), "ICM", space.icc_profile, profile);
}

}  // namespace qv
