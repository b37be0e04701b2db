#include "qvclr/create.h"

#include "qvclr/icc_transform.h"
#include "qvclr/library.h"
#include "qvclr/params.h"
#include "qvclr/spaces.h"

namespace qv {
namespace {

uint32_t RouteOf(uint32_t src_space, uint32_t dst_space) {
  return src_space == dst_space || IsRgb(src_space) || IsRgb(dst_space) ? kRouteDirect : kRouteTwoSteps;
}

// CS_CMYK_PROFILE is carried to and from the engine as CMYK.
const Space* IccSpace(uint32_t id) {
  const Space* space = FindSpace(id == CS_CMYK_PROFILE ? uint32_t{CS_CMYK} : id);
  return space && space->icc_format != 0 ? space : nullptr;
}

Status PrepareBuiltInIcc(uint32_t src_space, uint32_t dst_space, ColorConverter* converter) {
  IccSide in{IccSpace(src_space), {}}, out{IccSpace(dst_space), {}};
  if (!in.space || !out.space) return kUnsupportedColorSpace;
  converter->icc_in_format = in.space->icc_format;
  converter->icc_out_format = out.space->icc_format;
  for (IccSide* side : {&in, &out}) {
    if (const Status status = FindBuiltInProfile(*side->space, &side->profile); !Ok(status)) return status;
  }
  return IccTransform::Make(in, out, *converter->white_point, &converter->built_in_icc);
}

Status PrepareMethods(uint32_t src_space, uint32_t dst_space, ColorConverter* converter) {
  const uint32_t mask = converter->method_mask;
  if (mask & (METHOD_CUSTOM_ICC | METHOD_TABLE | METHOD_CUSTOM_TABLE)) return kUnsupportedMethod;
  if (converter->route == kRouteTwoSteps) {
    converter->icc_in_format = src_space;
    converter->icc_out_format = dst_space;
    return kSuccess;
  }
  return mask & METHOD_ICC ? PrepareBuiltInIcc(src_space, dst_space, converter) : kSuccess;
}

// `params` is the library's copy: the automatic choice is made in it.
Status Configure(uint32_t src_space, uint32_t dst_space, ConversionParams params, ColorConverter* converter) {
  if (params.nActiveMethod == METHOD_TABLE && params.nEmulationTableKind != METHOD_TABLE) return kInvalidParameter;
  Owned<WhitePointParams> white_point;
  if (const Status status = CopyWhitePoint(params.pWhitePoint, &white_point); !Ok(status)) return status;
  converter->white_point = white_point.release();
  ChooseMethod(src_space, dst_space, &params);
  if ((params.nMethodMask & kEveryMethod) == 0) return kUnsupportedMethod;
  if ((params.nActiveMethod & params.nMethodMask) == 0) return kUnsupportedMethod;
  converter->active_method = params.nActiveMethod;
  converter->method_mask = params.nMethodMask;
  if (const Status status = PrepareMethods(src_space, dst_space, converter); !Ok(status)) return status;
  return CopySubRecords(params, src_space, dst_space, converter);
}

Status AddSource11Tables(ColorConverter* converter) {
  auto tables = New<YCbCrTables>();
  if (!tables) return kNoMemory;
  BuildYCbCrTables(*tables);
  converter->source11_tables = tables.release();
  return kSuccess;
}

// Equal spaces need nothing: whatever their identifier, pixels are copied.
bool IsPlainCopy(uint32_t src_space, uint32_t dst_space, const ConversionParams* params) {
  return src_space == dst_space && !(params && (params->nMethodMask & METHOD_CUSTOM_ICC));
}

}  // namespace

Status CreateConverter(uint32_t src_space, uint32_t dst_space, const ConversionParams* params,
                       ColorConverter** handle) {
  const bool plain_copy = IsPlainCopy(src_space, dst_space, params);
  if (!plain_copy) {
    if (params && params->uStructSize != sizeof *params) return kInvalidStructSize;
    if (!FindSpace(src_space) || !FindSpace(dst_space)) return kUnsupportedColorSpace;
  }
  ConverterOwner converter(New<ColorConverter>().release());
  auto node = New<ConverterList::Node>();
  if (!converter || !node) return kNoMemory;
  converter->marker = kConverterMarker;
  converter->src_space = src_space;
  converter->dst_space = dst_space;
  if (!plain_copy) {
    converter->route = RouteOf(src_space, dst_space);
    converter->gamma = kGamma;
    converter->active_method = converter->method_mask = METHOD_FORMULA;
    Status status = params ? Configure(src_space, dst_space, *params, converter.get()) : kSuccess;
    if (Ok(status) && src_space == CS_CMYK_PROFILE) status = AddSource11Tables(converter.get());
    if (!Ok(status)) return status;
  }
  ColorConverter* const made = converter.get();
  AddConverter(std::move(converter), std::move(node));
  *handle = made;
  return kSuccess;
}

}  // namespace qv
