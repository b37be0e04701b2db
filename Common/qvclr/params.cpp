#include "qvclr/params.h"

#include <algorithm>
#include <cstring>

#include "base/text.h"
#include "qvclr/spaces.h"

namespace qv {

Status CopyWhitePoint(const WhitePointParams* from, Owned<WhitePointParams>* copy) {
  if (from && !IsReadable(from, sizeof *from)) return kBadPointer;
  *copy = New<WhitePointParams>();
  if (!*copy) return kNoMemory;
  if (from) {
    std::memcpy(copy->get(), from, sizeof *from);
  } else {
    (*copy)->nWhitePoint = 50;
  }
  return kSuccess;
}

Status CopyCmykParams(const CmykParams* from, ColorConverter* converter) {
  CmykParams params;
  if (const Status status = ReadSubRecord(from, &params); !Ok(status)) return status;
  auto copy = New<CmykParams>();
  if (!copy) return kNoMemory;
  *copy = params;
  converter->cmyk_params = copy.release();
  return kSuccess;
}

// The caller's luma table may go away: the copy has its own. A count without a pointer is no table.
Status CopyYuvParams(const Space1Params* from, ColorConverter* converter) {
  Space1Params params;
  if (const Status status = ReadSubRecord(from, &params); !Ok(status)) return status;
  if (!params.pLumaTable) params.nLumaTableBytes = 0;
  if (!IsReadable(params.pLumaTable, params.nLumaTableBytes)) return kBadPointer;
  auto record = New<YuvRecord>();
  auto luma = NewArray<uint8_t>(params.nLumaTableBytes);
  if (!record || !luma) return kNoMemory;
  if (params.pLumaTable) std::memcpy(luma.get(), params.pLumaTable, params.nLumaTableBytes);
  params.pLumaTable = luma.release();
  record->params = params;
  record->luma_bytes = params.nLumaTableBytes;
  record->MakeSettings();
  converter->yuv = record.release();
  return kSuccess;
}

Status ChangeYuvParams(const Space1Params* from, YuvRecord* record) {
  enum Flag : uint32_t {
    kUSpan = 1,
    kUOffset = 2,
    kVSpan = 4,
    kVOffset = 8,
    kLuma = 16,
    kLumaBytes = 32,
    kLumaSpan = 64
  };
  Space1Params change;
  if (const Status status = ReadSubRecord(from, &change); !Ok(status)) return status;
  Space1Params& params = record->params;
  if (change.nFlags & kLuma) {
    const uint32_t bytes = change.nLumaTableBytes;
    if (!IsReadable(change.pLumaTable, bytes)) return kBadPointer;
    if (bytes > record->luma_bytes) {
      auto grown = NewArray<uint8_t>(bytes);
      if (!grown) return kNoMemory;
      if (params.pLumaTable) std::memcpy(grown.get(), params.pLumaTable, record->luma_bytes);
      Release(const_cast<uint8_t*>(params.pLumaTable));
      params.pLumaTable = grown.release();
      record->luma_bytes = bytes;
    }
    if (bytes != 0) std::memcpy(const_cast<uint8_t*>(params.pLumaTable), change.pLumaTable, bytes);
  }
  if (change.nFlags & kUSpan) params.nUSpan = change.nUSpan;
  if (change.nFlags & kUOffset) params.nUOffset = change.nUOffset;
  if (change.nFlags & kVSpan) params.nVSpan = change.nVSpan;
  if (change.nFlags & kVOffset) params.nVOffset = change.nVOffset;
  if (change.nFlags & kLumaBytes) params.nLumaTableBytes = change.nLumaTableBytes;
  if (change.nFlags & kLumaSpan) params.nLumaSpan = change.nLumaSpan;
  record->MakeSettings();
  return kSuccess;
}

namespace {

Status MakeLabRecords(const LabParams* from, ColorConverter* converter) {
  LabParams params;
  if (const Status status = ReadSubRecord(from, &params); !Ok(status)) return status;
  auto to_rgb = New<LabToRgbRecord>();
  auto from_rgb = New<RgbToLabRecord>();
  if (!to_rgb || !from_rgb) return kNoMemory;
  to_rgb->constants = LabToRgbConstants(params);
  from_rgb->constants = RgbToLabConstants(params);
  BuildTables(*to_rgb, converter->gamma);
  BuildTables(*from_rgb, converter->gamma);
  converter->lab_to_rgb = to_rgb.release();
  converter->rgb_to_lab = from_rgb.release();
  return kSuccess;
}

}  // namespace

Status CopySubRecords(const ConversionParams& params, uint32_t src_space, uint32_t dst_space,
                      ColorConverter* converter) {
  if (EitherIs(CS_CMYK, src_space, dst_space) && params.pCmykParams) {
    if (const Status status = CopyCmykParams(params.pCmykParams, converter); !Ok(status)) return status;
  }
  if (EitherIs(CS_YUV, src_space, dst_space) && params.pSpace1Params) {
    if (const Status status = CopyYuvParams(params.pSpace1Params, converter); !Ok(status)) return status;
  }
  if (EitherIs(CS_LAB, src_space, dst_space) && params.pLabParams) return MakeLabRecords(params.pLabParams, converter);
  return kSuccess;
}

void ChooseMethod(uint32_t src_space, uint32_t dst_space, ConversionParams* params) {
  if (params->nMethodMask != METHOD_AUTOMATIC || params->nActiveMethod != METHOD_AUTOMATIC) return;
  uint32_t method = METHOD_AUTOMATIC;
  if (!IsRgb(src_space) && !IsRgb(dst_space)) {
    method = METHOD_FORMULA;
  } else if (EitherIs(CS_CMYK, src_space, dst_space)) {
    method = METHOD_ICC;
  } else if (EitherIs(CS_LAB, src_space, dst_space)) {
    method = METHOD_FORMULA;
  } else if (src_space == CS_CMYK_PROFILE) {
    method = METHOD_ICC;
  }
  params->nMethodMask = params->nActiveMethod = method;
}

void WidenParams(const ConversionParamsA& narrow, ConversionParams* wide) {
  *wide = {};
  wide->uStructSize = sizeof *wide;
  wide->nActiveMethod = narrow.nActiveMethod;
  wide->pWhitePoint = narrow.pWhitePoint;
  wide->pSourceProfileMemory = narrow.pSourceProfileMemory;
  wide->pDestProfileMemory = narrow.pDestProfileMemory;
  wide->pCmykParams = narrow.pCmykParams;
  wide->pSpace1Params = narrow.pSpace1Params;
  wide->pLabParams = narrow.pLabParams;
  wide->nMethodMask = narrow.nMethodMask;
  wide->nEmulationTableKind = narrow.nEmulationTableKind;
  const auto widen = [](const char(&from)[260], QWChar(&to)[260]) {
    constexpr QWChar kReplacement = 0xFFFD;
    if (!WideFromNarrow(from, to)) std::ranges::fill(to, kReplacement);  // without terminator: too long a name
  };
  widen(narrow.sSourceProfileName, wide->sSourceProfileName);
  widen(narrow.sDestProfileName, wide->sDestProfileName);
  widen(narrow.sEmulationTableName, wide->sEmulationTableName);
}

}  // namespace qv
