#include "qvclr/change.h"

#include <algorithm>
#include <cstring>

#include "base/files.h"
#include "base/readable.h"
#include "qvclr/icc_methods.h"
#include "qvclr/params.h"
#include "qvclr/tables.h"

namespace qv {
namespace {

bool IsOneOfFour(uint32_t method) {
  return method == METHOD_FORMULA || method == METHOD_ICC || method == METHOD_CUSTOM_ICC || method == METHOD_TABLE;
}

// Any other value than these four is taken as it stands: intended.
Status ChangeActiveMethod(const ConversionParams& params, ColorConverter* converter) {
  const uint32_t method = params.nActiveMethod;
  if (IsOneOfFour(method) && (converter->method_mask & method) == 0) return kUnsupportedMethod;
  converter->active_method = method;
  return kSuccess;
}

bool HasSide(const ColorConverter& converter, uint32_t space) {
  return EitherIs(space, converter.src_space, converter.dst_space);
}

Status ChangeCmyk(const ConversionParams& params, ColorConverter* converter) {
  if (!HasSide(*converter, CS_CMYK)) return kUnsupportedMethod;
  if (!params.pCmykParams) return kInvalidParameter;
  if (!converter->cmyk_params) return CopyCmykParams(params.pCmykParams, converter);
  CmykParams change;
  if (const Status status = ReadSubRecord(params.pCmykParams, &change); !Ok(status)) return status;
  if (change.nFlags & 1) converter->cmyk_params->nBlackParam = change.nBlackParam;
  return kSuccess;
}

Status ChangeYuv(const ConversionParams& params, ColorConverter* converter) {
  if (!HasSide(*converter, CS_YUV)) return kUnsupportedMethod;
  if (!params.pCmykParams) return kInvalidParameter;  // of all records this one: intended
  if (!params.pSpace1Params) return kInvalidParameter;
  if (!converter->yuv) return CopyYuvParams(params.pSpace1Params, converter);
  return ChangeYuvParams(params.pSpace1Params, converter->yuv);
}

// The other Lab record stays as it was made, and a record that is made here has settings of its own, whatever the
// caller's say: both intended.
Status ChangeLab(const ConversionParams& params, ColorConverter* converter) {
  if (!HasSide(*converter, CS_LAB)) return kUnsupportedMethod;
  if (!params.pLabParams) return kInvalidParameter;
  LabParams change;
  if (const Status status = ReadSubRecord(params.pLabParams, &change); !Ok(status)) return status;
  if (converter->lab_to_rgb) {
    ChangeLabCoding(change, &converter->lab_to_rgb->constants);
  } else {
    auto record = New<LabToRgbRecord>();
    if (!record) return kNoMemory;
    record->constants = ChangedLabToRgbConstants();
    converter->lab_to_rgb = record.release();
  }
  BuildTables(*converter->lab_to_rgb, kGamma);
  return kSuccess;
}

Status TakeWhitePoint(const WhitePointParams* from, ColorConverter* converter) {
  if (!from) return kInvalidParameter;
  if (!IsReadable(from, sizeof *from)) return kBadPointer;
  if (!converter->white_point) converter->white_point = New<WhitePointParams>().release();
  if (!converter->white_point) return kNoMemory;
  std::memcpy(converter->white_point, from, sizeof *from);
  return kSuccess;
}

// With any other method active than the four, nothing is looked at.
Status ChangeWhitePoint(const ConversionParams& params, ColorConverter* converter) {
  const uint32_t method = converter->active_method;
  if (!IsOneOfFour(method)) return kSuccess;
  if (const Status status = TakeWhitePoint(params.pWhitePoint, converter); !Ok(status)) return status;
  if (method == METHOD_ICC) return MakeBuiltInIcc(converter);
  const bool follows_with_profiles = (params.nMethodMask & CHANGE_PROFILES) != 0;
  return method == METHOD_CUSTOM_ICC && !follows_with_profiles ? MakeCustomIcc(converter) : kSuccess;
}

Status ChangeProfiles(const ConversionParams& params, ColorConverter* converter) {
  TakeProfileNames(params, converter);
  return MakeCustomIcc(converter);
}

// A file that cannot be read leaves an empty table, and only the pairs below are given a new one: both intended.
Status ChangeTable(const ConversionParams& params, ColorConverter* converter) {
  std::ranges::copy(params.sEmulationTableName, converter->table_name);
  Drop(converter->custom_table);
  const EmulationTable* kind = TableFor(converter->src_space, converter->dst_space);
  if (!kind || converter->src_space == CS_BGR || converter->src_space == CS_LAB) return kSuccess;
  auto table = NewArray<uint8_t>(kind->bytes);
  if (!table) return kNoMemory;
  const bool is_read =
      NamesExistingFile(converter->table_name) && Ok(ReadTable(converter->table_name, kind->bytes, &table));
  if (!is_read) std::fill_n(table.get(), kind->bytes, uint8_t{0});
  converter->custom_table = table.release();
  return kSuccess;
}

struct Step {
  uint32_t bit;
  Status (*change)(const ConversionParams& params, ColorConverter* converter);
};
constexpr Step kSteps[] = {{CHANGE_ACTIVE_METHOD, ChangeActiveMethod},
                           {CHANGE_CMYK, ChangeCmyk},
                           {CHANGE_SPACE1, ChangeYuv},
                           {CHANGE_LAB, ChangeLab},
                           {CHANGE_WHITE_POINT, ChangeWhitePoint},
                           {CHANGE_PROFILES, ChangeProfiles},
                           {CHANGE_TABLE, ChangeTable}};

Status ChangeInOrder(const ConversionParams& params, ColorConverter* converter) {
  for (const Step& step : kSteps) {
    if ((params.nMethodMask & step.bit) == 0) continue;
    if (const Status status = step.change(params, converter); !Ok(status)) return status;
  }
  return kSuccess;
}

}  // namespace

Status ChangeConverter(const ConversionParams& params, ColorConverter* converter) {
  const ColorConverter before = *converter;
  const Status status = ChangeInOrder(params, converter);
  if (status == kNoMemory) {
    if (!before.cmyk_params) Drop(converter->cmyk_params);
    if (!before.yuv) DropYuvRecord(converter->yuv);
    if (!before.lab_to_rgb) Drop(converter->lab_to_rgb);
    if (!before.white_point) Drop(converter->white_point);
  }
  return status;
}

}  // namespace qv
