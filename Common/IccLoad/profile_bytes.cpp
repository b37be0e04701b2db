#include "IccLoad/profile_bytes.h"

#include <algorithm>
#include <cstring>

#include "base/memory.h"

namespace qv {

Status AppendProfileBytes(IccProfileRecord* record, const void* bytes, size_t count) {
  const size_t room = BytesOf(record->profileBytes), needed = record->profileByteSize + count;
  if (!record->profileBytes || needed > room) {
    void* grown = ResizeImage(record->profileBytes, std::max(needed, 2 * room));
    if (!grown) return kFailure;
    record->profileBytes = static_cast<uint8_t*>(grown);
  }
  if (count != 0) std::memcpy(record->profileBytes + record->profileByteSize, bytes, count);
  record->profileByteSize = needed;
  return kSuccess;
}

void TrimProfileBytes(IccProfileRecord* record) {
  if (record->profileByteSize == BytesOf(record->profileBytes)) return;
  void* trimmed = ResizeImage(record->profileBytes, record->profileByteSize);
  if (trimmed) record->profileBytes = static_cast<uint8_t*>(trimmed);
}

}  // namespace qv
