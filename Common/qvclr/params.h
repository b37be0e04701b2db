// The caller's settings: reading them safely and taking copies.
#pragma once

#include <cstring>

#include "base/memory.h"
#include "base/readable.h"
#include "qvclr/converter.h"

namespace qv {

inline constexpr uint32_t kEveryMethod =
    METHOD_FORMULA | METHOD_ICC | METHOD_CUSTOM_ICC | METHOD_TABLE | METHOD_CUSTOM_TABLE;

constexpr bool EitherIs(uint32_t space, uint32_t src_space, uint32_t dst_space) {
  return src_space == space || dst_space == space;
}

// Reads a sub-record that opens with its size. kBadPointer when it is not readable, kInvalidStructSize for another
// size.
template <typename Record>
Status ReadSubRecord(const Record* from, Record* record) {
  if (!IsReadable(from, sizeof(Record))) return kBadPointer;
  std::memcpy(record, from, sizeof(Record));
  return record->uStructSize == sizeof(Record) ? kSuccess : kInvalidStructSize;
}

// The white point of a record, D50 where `from` is null.
Status CopyWhitePoint(const WhitePointParams* from, Owned<WhitePointParams>* copy);

// The copies of the sub-records that the pair of spaces needs, into the converter.
Status CopySubRecords(const ConversionParams& params, uint32_t src_space, uint32_t dst_space,
                      ColorConverter* converter);

// The copies of single sub-records, which the converter must not hold yet.
Status CopyCmykParams(const CmykParams* from, ColorConverter* converter);
Status CopyYuvParams(const Space1Params* from, ColorConverter* converter);

// Takes over what the flags of `from` select. The luma table is copied into the record's own, which grows as needed.
Status ChangeYuvParams(const Space1Params* from, YuvRecord* record);

// Replaces METHOD_AUTOMATIC in both fields by the method for the pair, or leaves it where no rule matches. Only the
// source is looked at for CS_CMYK_PROFILE: intended.
void ChooseMethod(uint32_t src_space, uint32_t dst_space, ConversionParams* params);

// A name that cannot be converted becomes one that no file has.
void WidenParams(const ConversionParamsA& narrow, ConversionParams* wide);

}  // namespace qv
