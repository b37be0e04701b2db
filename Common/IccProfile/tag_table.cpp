#include "IccProfile/tag_table.h"

#include <cstring>

#include "base/memory.h"

namespace qv {
namespace {

// Grows a buffer of the record; its fields may be read only by value.
template <typename T>
T* Grown(T* buffer, uint64_t bytes) {
  return static_cast<T*>(Resize(buffer, bytes));
}

}  // namespace

Status AppendTag(IccProfileRecord* record, uint32_t signature, size_t bytes, uint8_t** room) {
  if (!record->header || (record->tagCount != 0 && !HasTags(*record))) return kInvalidParameter;
  const uint64_t padded = (uint64_t{bytes} + 3) / 4 * 4;
  const uint64_t offset = DataBegin(record->tagCount + 1) + record->tagDataSize;
  if (record->tagDataSize > UINT32_MAX || offset + padded > UINT32_MAX) return kFailure;

  const uint32_t count = ++record->tagCount;
  if (count == 1) {
    record->tagTable = nullptr;
    record->tagData = nullptr;
  }
  IccTagEntry* table = Grown(record->tagTable, uint64_t{sizeof(IccTagEntry)} * count);
  if (!table) return kFailure;
  record->tagTable = table;
  for (uint32_t i = 0; i + 1 < count; ++i) table[i].offset += sizeof(IccTagEntry);
  table[count - 1] = {signature, static_cast<uint32_t>(offset), static_cast<uint32_t>(bytes)};

  uint8_t* data = Grown(record->tagData, record->tagDataSize + padded);
  if (!data) return kFailure;
  record->tagData = data;
  *room = data + record->tagDataSize;
  std::memset(*room, 0, padded);
  record->tagDataSize += padded;
  record->header->profileSize += static_cast<uint32_t>(padded + sizeof(IccTagEntry));
  return kSuccess;
}

void RemoveTag(IccProfileRecord* record, IccTagEntry* entry) {
  const IccTagEntry removed = *entry;
  const std::span<IccTagEntry> tags = TagsOf(*record);
  const std::span<uint8_t> data = DataOf(*record);
  const uint64_t position = removed.offset - DataBegin(record->tagCount);
  std::memmove(entry, entry + 1, static_cast<size_t>(&tags.back() - entry) * sizeof removed);
  if (--record->tagCount == 0) {  // the numbers stay; the next append starts anew
    Release(record->tagTable);
    Release(record->tagData);
    return;
  }
  uint8_t* const hole = data.data() + position;
  const size_t behind = data.size() - position - removed.size;
  if (behind != 0) std::memmove(hole, hole + removed.size, behind);  // 0 also where there is no data at all
  record->tagDataSize -= removed.size;
  record->header->profileSize -= static_cast<uint32_t>(removed.size + sizeof(IccTagEntry));
  for (IccTagEntry& rest : TagsOf(*record)) {
    rest.offset -= static_cast<uint32_t>(sizeof(IccTagEntry) + (rest.offset < removed.offset ? 0 : removed.size));
  }
}

void ClearProfileId(IccProfileRecord* record) {
  if (record->header) std::memset(record->header->profileId, 0, sizeof record->header->profileId);
}

}  // namespace qv
