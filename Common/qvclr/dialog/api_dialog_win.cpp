// Exported: the settings dialog.
#include <windows.h>

#include <algorithm>
#include <cstring>

#include "base/boundary.h"
#include "base/readable.h"
#include "base/text.h"
#include "qvclr/dialog/dialog.h"
#include "qvclr/library.h"
#include "qvclr/params.h"

using namespace qv;

namespace {

// Records of the caller's need not be aligned.
template <typename Value>
Value Copy(const Value* from) {
  Value value;
  std::memcpy(&value, from, sizeof value);
  return value;
}
template <typename Value>
void Store(const Value& value, const Value* to) {
  std::memcpy(const_cast<Value*>(to), &value, sizeof value);
}

Status TakeRecord(const ConversionParams& record, Draft* draft) {
  draft->params = record;
  return record.uStructSize == sizeof record ? kSuccess : kInvalidStructSize;
}

Status TakeRecord(const ConversionParamsA& record, Draft* draft) {
  WidenParams(record, &draft->params);
  draft->narrow_names = true;
  return kSuccess;
}

void StoreRecord(const Draft& draft, ConversionParams* record) { Store(draft.params, record); }

// A name that the dialog left alone keeps its bytes, which may be none that can be converted.
void StoreRecord(const Draft& draft, ConversionParamsA* record) {
  ConversionParamsA narrow = Copy(record);
  ConversionParams before;
  WidenParams(narrow, &before);
  const auto take = [](const QWChar(&was)[260], const QWChar(&is)[260], char(&name)[260]) {
    if (!std::ranges::equal(was, is)) NarrowFromWide(is, name);  // it can: the dialog saw to that
  };
  narrow.nActiveMethod = draft.params.nActiveMethod;
  narrow.nMethodMask = draft.params.nMethodMask;
  narrow.nEmulationTableKind = draft.params.nEmulationTableKind;
  take(before.sSourceProfileName, draft.params.sSourceProfileName, narrow.sSourceProfileName);
  take(before.sDestProfileName, draft.params.sDestProfileName, narrow.sDestProfileName);
  take(before.sEmulationTableName, draft.params.sEmulationTableName, narrow.sEmulationTableName);
  Store(narrow, record);
}

template <typename SubRecord>
Status TakeSubRecord(const SubRecord* from, SubRecord* copy) {
  if (!IsWritable(from, sizeof *from)) return kBadPointer;
  *copy = Copy(from);
  return kSuccess;
}

// Those of the pair, and the white point.
Status TakeSubRecords(Draft* draft) {
  const ConversionParams& given = draft->params;
  if (given.pWhitePoint) {
    if (const Status status = TakeSubRecord(given.pWhitePoint, &draft->white_point); !Ok(status)) return status;
  }
  if (given.pCmykParams && EitherIs(CS_CMYK, draft->src_space, draft->dst_space)) {
    if (const Status status = TakeSubRecord(given.pCmykParams, &draft->cmyk); !Ok(status)) return status;
    if (draft->cmyk.uStructSize != sizeof draft->cmyk) return kInvalidStructSize;
  }
  if (given.pLabParams && EitherIs(CS_LAB, draft->src_space, draft->dst_space)) {
    if (const Status status = TakeSubRecord(given.pLabParams, &draft->lab); !Ok(status)) return status;
    if (draft->lab.uStructSize != sizeof draft->lab) return kInvalidStructSize;
  }
  return kSuccess;
}

void StoreSubRecords(const Draft& draft) {
  const ConversionParams& given = draft.params;
  if (given.pWhitePoint) Store(draft.white_point, given.pWhitePoint);
  if (given.pCmykParams && EitherIs(CS_CMYK, draft.src_space, draft.dst_space)) Store(draft.cmyk, given.pCmykParams);
  if (given.pLabParams && EitherIs(CS_LAB, draft.src_space, draft.dst_space)) Store(draft.lab, given.pLabParams);
}

template <typename Record>
int32_t SetUp(void* owner, ColorConverter** converter, uint32_t* src_space, uint32_t* dst_space, Record* record) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!src_space || !dst_space || !record) return kInvalidParameter;
    if (owner && !IsWindow(static_cast<HWND>(owner))) return kInvalidParameter;
    if (converter && !IsWritable(converter, sizeof *converter)) return kBadPointer;
    if (!IsWritable(src_space, sizeof *src_space)) return kBadPointer;
    if (!IsWritable(dst_space, sizeof *dst_space)) return kBadPointer;
    if (!IsWritable(record, sizeof *record)) return kBadPointer;

    Draft draft{};
    draft.src_space = Copy(src_space);
    draft.dst_space = Copy(dst_space);
    if (const Status status = TakeRecord(Copy(record), &draft); !Ok(status)) return status;
    if (!HasDialog(draft.src_space, draft.dst_space)) return kUnsupportedColorSpace;
    if (const Status status = TakeSubRecords(&draft); !Ok(status)) return status;

    ColorConverter* made = nullptr;
    if (const Status status = RunDialog(owner, &draft, &made); !Ok(status)) return status;
    StoreSubRecords(draft);
    StoreRecord(draft, record);
    Store(draft.src_space, src_space);
    Store(draft.dst_space, dst_space);
    converter ? Store(made, converter) : DiscardConverter(made);
    return kSuccess;
  });
}

}  // namespace

extern "C" int32_t Q_ClrDlg(void* hWndParent, ColorConverter** phConverter, uint32_t* pnSrcSpace, uint32_t* pnDstSpace,
                            ConversionParams* pParams) {
  return SetUp(hWndParent, phConverter, pnSrcSpace, pnDstSpace, pParams);
}

extern "C" int32_t Q_ClrDlgA(void* hWndParent, ColorConverter** phConverter, uint32_t* pnSrcSpace, uint32_t* pnDstSpace,
                             ConversionParamsA* pParams) {
  return SetUp(hWndParent, phConverter, pnSrcSpace, pnDstSpace, pParams);
}
