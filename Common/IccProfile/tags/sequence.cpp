// The profiles that a profile was made of.
#include <algorithm>

#include "IccProfile/profile_record.h"
#include "IccProfile/tags/tags.h"

namespace qv {
namespace {

// Bytes of the typed text at the reader's position, by its own counts; 0 for a type that carries no description, and
// for counts that lead out of the data. A text that lies beyond the data shows when it is read.
uint64_t BytesOfText(ByteReader reader) {
  const size_t begin = reader.At();
  const uint64_t type = reader.Big(4);
  reader.Big(4);
  if (type == Signature("mluc")) {
    const uint64_t records = reader.Big(4);
    reader.Big(4);
    uint64_t end = 16 + 12 * records;
    for (uint64_t i = 0; i < records && reader.Ok(); ++i) {
      reader.Big(4);
      const uint64_t length = reader.Big(4);
      end = std::max(end, reader.Big(4) + length);
    }
    return end;
  }
  if (type == Signature("desc")) {
    reader.Seek(begin + 12 + static_cast<size_t>(reader.Big(4)));
    reader.Big(4);
    const uint64_t unicode = reader.Big(4);
    return reader.Ok() ? reader.At() - begin + 2 * unicode + 70 : 0;
  }
  return 0;
}

void DescribeTypedText(TagWalk& walk, size_t at, size_t size_at) {
  const uint64_t bytes = walk.Decodes() && walk.Ok() ? BytesOfText(walk.Reader()) : walk.Number(4, size_at);
  if (bytes == 0) walk.Fail(walk.Decodes() ? kInvalidProfile : kInvalidParameter);
  walk.SetNumber(4, size_at, bytes);
  walk.Array(1, at, bytes);
}

void DescribeProfile(TagWalk& walk) {
  using T = IccProfileDescription;
  walk.Numbers(4, QV_AT(manufacturer));
  walk.Numbers(4, QV_AT(model));
  walk.Numbers(8, QV_AT(attributes));
  walk.Numbers(4, QV_AT(technology));
  DescribeTypedText(walk, QV_AT(manufacturerText), QV_AT(manufacturerTextBytes));
  DescribeTypedText(walk, QV_AT(modelText), QV_AT(modelTextBytes));
}

}  // namespace

void DescribeProfileSequence(TagWalk& walk) {
  using T = IccProfileSequenceTagType;
  constexpr size_t kLeastBytes = 20;
  walk.Numbers(4, QV_AT(profileCount));
  walk.Records(QV_AT(profiles), walk.Number(4, QV_AT(profileCount)), sizeof(IccProfileDescription), kLeastBytes,
               DescribeProfile);
}

}  // namespace qv
