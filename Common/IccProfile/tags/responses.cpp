// Response curves of a device in several measurement units.
#include "IccProfile/tags/tags.h"
#include "Qvclr15x.h"

namespace qv {
namespace {

void DescribeResponse(TagWalk& walk) {
  using T = IccResponse;
  walk.Numbers(2, QV_AT(deviceCode));
  walk.Reserved(2, QV_AT(reserved));
  walk.Numbers(4, QV_AT(value));
}

void DescribeUnit(TagWalk& walk) {
  using T = IccResponseCurves;
  const size_t channels = walk.NumberOfWhole(2, offsetof(IccResponseCurveSetTagType, channelCount));
  const TagWalk::Slot slot = walk.OffsetSlot();
  walk.Part(slot, [&] {
    walk.Numbers(4, QV_AT(measurementUnit));
    walk.Array(4, QV_AT(counts), channels);
    walk.Array(4, QV_AT(maxima), 3 * channels);
    uint64_t responses = 0;
    for (size_t i = 0; i < channels; ++i) responses += walk.Element(4, QV_AT(counts), i);
    walk.Records(QV_AT(responses), responses, sizeof(IccResponse), sizeof(IccResponse), DescribeResponse);
  });
}

}  // namespace

// The curves of the units follow each other in the order of their offsets.
void DescribeResponseCurves(TagWalk& walk) {
  using T = IccResponseCurveSetTagType;
  constexpr size_t kOffsetBytes = 4;
  walk.Numbers(2, QV_AT(channelCount));
  walk.Numbers(2, QV_AT(unitCount));
  const uint64_t units = walk.Number(2, QV_AT(unitCount));
  walk.KeepFree(units * kOffsetBytes);
  walk.Records(QV_AT(units), units, sizeof(IccResponseCurves), kOffsetBytes, DescribeUnit);
}

}  // namespace qv
