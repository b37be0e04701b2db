// Types that carry text.
#include <cstring>

#include "IccProfile/tags/tags.h"
#include "Qvclr15x.h"

namespace qv {
namespace {

constexpr size_t kHiddenZeros = 4;  // text can be measured in units of 16 bits

// In units of 16 bits, up to the first that is zero.
uint64_t LengthInUnits(const uint8_t* text) {
  uint64_t units = 0;
  for (uint16_t unit = 1;; ++units) {
    std::memcpy(&unit, text + units * sizeof unit, sizeof unit);
    if (unit == 0) return units;
  }
}

}  // namespace

// Of the length in 16-bit units, as many bytes and one more are copied, and again when they are written: intended.
void DescribeText(TagWalk& walk) {
  using T = IccTextTagType;
  const uint8_t* text = walk.Source(QV_AT(text));
  uint64_t bytes = 0;
  if (walk.Decodes()) {
    bytes = walk.CountOfRest(1);
  } else if (text && !walk.Releases()) {
    bytes = LengthInUnits(text) + 1;
  }
  walk.Array(1, QV_AT(text), bytes, kHiddenZeros);
}

// ASCII takes the byte behind the data along, as a terminator: the tag grows by it whenever it is read and set
// (intended).
void DescribeData(TagWalk& walk) {
  using T = IccDataTagType;
  walk.Numbers(4, QV_AT(dataFlag));
  const uint64_t length = walk.Decodes() ? walk.CountOfRest(1) : walk.Number(4, QV_AT(dataLength));
  const bool ascii = walk.Number(4, QV_AT(dataFlag)) == 0;
  const bool terminated = ascii && (!walk.Decodes() || walk.Has(length + 1));  // at the end of the data it reads as 0
  walk.SetNumber(4, QV_AT(dataLength), length);
  walk.Array(1, QV_AT(data), length + (terminated ? 1 : 0), kHiddenZeros);
}

namespace {

void DescribeLocalizedText(TagWalk& walk) {
  using T = IccLocalizedText;
  walk.Numbers(2, QV_AT(language));
  walk.Numbers(2, QV_AT(country));
  walk.Numbers(4, QV_AT(textBytes));
  const TagWalk::Slot slot = walk.OffsetSlot();
  const uint64_t units = walk.Number(4, QV_AT(textBytes)) / 2;
  walk.Part(slot, [&] { walk.Array(2, QV_AT(text), units, kHiddenZeros); });
}

}  // namespace

// Strings stand behind the records in their order.
void DescribeMultiLocalized(TagWalk& walk) {
  using T = IccMultiLocalizedTagType;
  constexpr size_t kRecordBytes = 12;
  walk.Numbers(4, QV_AT(recordCount));
  if (walk.Unkept(4, kRecordBytes) != kRecordBytes) walk.Fail(kInvalidProfile);
  const uint64_t count = walk.Number(4, QV_AT(recordCount));
  walk.KeepFree(count * kRecordBytes);
  walk.Records(QV_AT(records), count, sizeof(IccLocalizedText), kRecordBytes, DescribeLocalizedText);
}

}  // namespace qv
