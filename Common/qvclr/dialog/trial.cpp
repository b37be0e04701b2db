#include "qvclr/dialog/trial.h"

#include <bit>

#include "base/status.h"

namespace qv {
namespace {

// The record as the library reads it: with the draft's own sub-records.
ConversionParams RecordOf(const Draft& draft) {
  ConversionParams params = draft.params;
  if (params.pWhitePoint) params.pWhitePoint = &draft.white_point;
  if (params.pCmykParams) params.pCmykParams = &draft.cmyk;
  if (params.pLabParams) params.pLabParams = &draft.lab;
  return params;
}

Status Try(const Draft& draft, const ConversionParams& params, ColorConverter** made) {
  return static_cast<Status>(Q_ClrInit(made, draft.src_space, draft.dst_space, &params));
}

// Whether the profile of the source side, with the built-in one on the other side, is refused.
bool SourceIsRefused(const Draft& draft) {
  ConversionParams params = RecordOf(draft);
  if (!params.pSourceProfileMemory && params.sSourceProfileName[0] == 0) return false;
  params.pWhitePoint = nullptr;
  params.sDestProfileName[0] = 0;
  params.pDestProfileMemory = nullptr;
  ColorConverter* made = nullptr;
  const Status status = Try(draft, params, &made);
  if (Ok(status)) Q_ClrFree(made);
  return !Ok(status);
}

int MethodControl(const Draft& draft) { return QV_METHOD_FIRST + std::countr_zero(draft.params.nActiveMethod); }

Fault FaultOfProfiles(const Draft& draft, Status status) {
  const ConversionParams& params = draft.params;
  const bool in_memory = params.pSourceProfileMemory || params.pDestProfileMemory;
  if (!in_memory && params.sSourceProfileName[0] == 0 && params.sDestProfileName[0] == 0) {
    return {QV_EDIT_SOURCE, QV_TEXT_NO_PROFILE_NAMED};
  }
  const bool is_source = SourceIsRefused(draft);
  if (is_source ? params.pSourceProfileMemory : params.pDestProfileMemory) {
    return {MethodControl(draft), QV_TEXT_NO_METHOD};
  }
  return {is_source ? QV_EDIT_SOURCE : QV_EDIT_DEST, status == kProfileName ? QV_TEXT_NO_FILE : QV_TEXT_NO_PROFILE};
}

Fault FaultOf(const Draft& draft, Status status) {
  if (status == kNoMemory) return {MethodControl(draft), QV_TEXT_NO_MEMORY};
  if (status == kInvalidParameter) return {QV_EDIT_X, QV_TEXT_NO_CHROMATICITY};
  switch (draft.params.nActiveMethod) {
    case METHOD_CUSTOM_ICC: return FaultOfProfiles(draft, status);
    case METHOD_CUSTOM_TABLE: return {QV_EDIT_TABLE, status == kProfileName ? QV_TEXT_NO_FILE : QV_TEXT_NO_TABLE};
    default: return {MethodControl(draft), QV_TEXT_NO_METHOD};
  }
}

}  // namespace

Fault TryDraft(const Draft& draft, ColorConverter** made) {
  const Status status = Try(draft, RecordOf(draft), made);
  return Ok(status) ? Fault{} : FaultOf(draft, status);
}

}  // namespace qv
