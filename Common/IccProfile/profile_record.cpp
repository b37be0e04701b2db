#include "IccProfile/profile_record.h"

#include <algorithm>

#include "base/memory.h"

namespace qv {

bool HasTags(const IccProfileRecord& record) { return record.tagCount >= 1 && record.tagCount <= INT32_MAX; }

std::span<IccTagEntry> TagsOf(const IccProfileRecord& record) {
  if (!HasTags(record)) return {};
  return {record.tagTable, std::min<size_t>(record.tagCount, BytesOf(record.tagTable) / sizeof(IccTagEntry))};
}

std::span<uint8_t> DataOf(const IccProfileRecord& record) {
  if (!HasTags(record)) return {};
  const size_t claimed = record.tagDataSize;  // a packed field must not be bound to a reference
  return {record.tagData, std::min(claimed, BytesOf(record.tagData))};
}

IccTagEntry* FindTag(const IccProfileRecord& record, uint32_t signature) {
  for (IccTagEntry& entry : TagsOf(record)) {
    if (entry.signature == signature) return &entry;
  }
  return nullptr;
}

bool LiesInside(const IccProfileRecord& record, const IccTagEntry& entry) {
  const uint64_t begin = DataBegin(record.tagCount), end = begin + DataOf(record).size();
  return entry.offset >= begin && entry.offset <= end && entry.size <= end - entry.offset;
}

Status ReadTag(const IccProfileRecord& record, const IccTagEntry& entry, ByteReader* reader) {
  if (!LiesInside(record, entry)) return kInvalidProfile;
  *reader = ByteReader(DataOf(record).subspan(entry.offset - DataBegin(record.tagCount)), entry.size);
  return kSuccess;
}

}  // namespace qv
