// Types of fixed size or of one plain array.
#include "IccProfile/tags/tags.h"
#include "Qvclr15x.h"

namespace qv {
namespace {

// Signatures shorter than four characters end in spaces.
constexpr uint64_t Completed(uint64_t signature) {
  if (signature < 0x100) return signature << 24 | 0x202020;
  if (signature < 0x10000) return signature << 16 | 0x2020;
  return signature < 0x1000000 ? signature << 8 | 0x20 : signature;
}

}  // namespace

void DescribeRaw(TagWalk& walk) {
  using T = IccUnknownTagType;
  const uint64_t count = walk.Decodes() ? walk.CountOfRest(1) : walk.HostNumber(4, QV_AT(dataSize));
  walk.SetHostNumber(4, QV_AT(dataSize), count);
  walk.Array(1, QV_AT(data), count);
}

template <size_t kWidth, size_t kGroup>
void DescribeNumberArray(TagWalk& walk) {
  using T = IccNumberArrayTagType;
  const uint64_t count = walk.Decodes() ? walk.CountOfRest(kWidth * kGroup) : walk.Number(4, QV_AT(valueCount));
  walk.SetNumber(4, QV_AT(valueCount), count);
  walk.Array(kWidth, QV_AT(values), count * kGroup);
}
template void DescribeNumberArray<1, 1>(TagWalk& walk);
template void DescribeNumberArray<2, 1>(TagWalk& walk);
template void DescribeNumberArray<4, 1>(TagWalk& walk);
template void DescribeNumberArray<8, 1>(TagWalk& walk);
template void DescribeNumberArray<4, 3>(TagWalk& walk);

void DescribeSignature(TagWalk& walk) {
  using T = IccSignatureTagType;
  if (walk.Constructs()) {
    walk.SetNumber(4, QV_AT(signatureValue), Completed(walk.Number(4, QV_AT(signatureValue))));
  } else {
    walk.Numbers(4, QV_AT(signatureValue));
  }
}

void DescribeDateTime(TagWalk& walk) {
  using T = IccDateTimeTagType;
  walk.Numbers(2, QV_AT(dateTime), 6);
}

void DescribeViewingConditions(TagWalk& walk) {
  using T = IccViewingConditionsTagType;
  walk.Numbers(4, QV_AT(illuminant), 3);
  walk.Numbers(4, QV_AT(surround), 3);
  walk.Numbers(4, QV_AT(illuminantType));
}

void DescribeMeasurement(TagWalk& walk) {
  using T = IccMeasurementTagType;
  walk.Numbers(4, QV_AT(observer));
  walk.Numbers(4, QV_AT(backing), 3);
  walk.Numbers(4, QV_AT(geometry));
  walk.Numbers(4, QV_AT(flare));
  walk.Numbers(4, QV_AT(illuminantType));
}

}  // namespace qv
