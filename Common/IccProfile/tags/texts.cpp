// Types that carry text.
#include <cstring>

#include "IccProfile/tags/tags.h"
#include "Qvclr15x.h"
#include "base/readable.h"

namespace qv {
namespace {

constexpr size_t kHiddenZeros = 4;  // text can be measured in units of 16 bits

// One more than there are units of 16 bits before the first that is zero. SIZE_MAX, which nothing is readable for, when
// the text leaves readable memory before it ends.
size_t BytesTaken(const uint8_t* text) {
  constexpr uintptr_t kSmallestPage = 4096;
  size_t units = 0;
  for (uint16_t unit = 1; unit != 0; ++units) {
    const uint8_t* const from = text + units * sizeof unit;
    const bool enters_page = (reinterpret_cast<uintptr_t>(from) + 1) % kSmallestPage < sizeof unit;
    if ((units == 0 || enters_page) && !IsReadable(from, sizeof unit)) return SIZE_MAX;
    std::memcpy(&unit, from, sizeof unit);
  }
  return units;
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
    bytes = BytesTaken(text);
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
