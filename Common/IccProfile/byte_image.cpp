#include "IccProfile/byte_image.h"

#include <algorithm>
#include <cstring>

#include "IccProfile/profile_record.h"
#include "base/memory.h"

namespace qv {
namespace {

constexpr uint32_t kOldestVersion = 0x04000000;

// The numbers of a header one after the other, equal widths together; bytes follow.
struct HeaderRun {
  size_t width, count;
};
constexpr HeaderRun kHeaderRuns[] = {{4, 6}, {2, 6}, {4, 5}, {8, 1}, {4, 5}};
constexpr size_t kHeaderBytes = sizeof IccHeader::profileId + sizeof IccHeader::reserved;

// Reads as many numbers as the header has, or up to `end`.
void ReadHeader(ByteReader reader, IccHeader* header, size_t end = sizeof(IccHeader)) {
  auto* to = reinterpret_cast<uint8_t*>(header);
  size_t at = 0;
  for (const HeaderRun& run : kHeaderRuns) {
    for (size_t i = 0; i < run.count && at < end; ++i, at += run.width) {
      const uint64_t number = reader.Big(run.width);
      std::memcpy(to + at, &number, run.width);
    }
  }
  if (at < end) reader.Copy(to + at, kHeaderBytes);
}

void WriteHeader(const IccHeader& header, uint8_t* to) {
  const auto* from = reinterpret_cast<const uint8_t*>(&header);
  ByteWriter writer(to);
  for (const HeaderRun& run : kHeaderRuns) {
    for (size_t i = 0; i < run.count; ++i, from += run.width) {
      uint64_t number = 0;
      std::memcpy(&number, from, run.width);
      writer.Big(number, run.width);
    }
  }
  writer.Copy(header.profileId, sizeof header.profileId);
}

// A buffer of `length` bytes that costs memory for those that are there only.
template <typename Allocation>
uint8_t* ZeroFilledCopy(std::span<const uint8_t> available, uint64_t length, Allocation&& allocate) {
  auto* copy = static_cast<uint8_t*>(allocate(length));
  const size_t bytes = std::min<uint64_t>(available.size(), length);
  if (copy && bytes != 0) std::memcpy(copy, available.data(), bytes);
  return copy;
}

Status ReadTags(IccProfileRecord* record, std::span<const uint8_t> available, uint32_t length) {
  record->tagTable = nullptr;
  record->tagData = nullptr;
  record->tagDataSize = 0;
  const uint64_t begin = DataBegin(record->tagCount);
  if (record->header->profileSize < begin) return kFailure;
  if (length < begin) return kInvalidProfile;

  record->tagTable = NewArray<IccTagEntry>(record->tagCount).release();
  if (!record->tagTable) return kFailure;
  ByteReader reader({record->profileBytes, length});  // zero-filled where `available` ends, maybe within an entry
  reader.Seek(kTableBegin);
  const size_t table_bytes = available.size() - std::min(available.size(), kTableBegin);
  const size_t entries = std::min<size_t>(record->tagCount, table_bytes / sizeof(IccTagEntry) + 1);
  for (IccTagEntry& entry : TagsOf(*record).first(entries)) {
    entry.signature = static_cast<uint32_t>(reader.Big(4));
    entry.offset = static_cast<uint32_t>(reader.Big(4));
    entry.size = static_cast<uint32_t>(reader.Big(4));
  }
  const uint64_t bytes = record->header->profileSize - begin;
  record->tagData = ZeroFilledCopy(available.subspan(std::min<size_t>(begin, available.size())), bytes,
                                   [](size_t size) { return Allocate(size, 1); });
  if (!record->tagData) return kFailure;
  record->tagDataSize = bytes;
  return kSuccess;
}

}  // namespace

Status FillOpaque(IccProfileRecord* record, std::span<const uint8_t> available, uint32_t length) {
  record->profileByteSize = length;
  record->profileBytes = ZeroFilledCopy(available, length, [](size_t size) { return AllocateImage(size); });
  return record->profileBytes ? kSuccess : kFailure;
}

Status FillFromBytes(IccProfileRecord* record, std::span<const uint8_t> available, uint32_t length) {
  if (const Status status = FillOpaque(record, available, length); !Ok(status)) return status;
  if (!record->header) record->header = New<IccHeader>().release();
  if (!record->header) return kFailure;
  uint8_t head[kTableBegin] = {};  // a number that is cut in two keeps its first bytes
  std::copy_n(available.begin(), std::min(available.size(), sizeof head), head);
  ReadHeader(ByteReader(head), record->header, offsetof(IccHeader, deviceClass));
  if (record->header->version < kOldestVersion || length < kTableBegin) return kInvalidProfile;
  ReadHeader(ByteReader(head), record->header);
  record->tagCount = static_cast<uint32_t>(BigEndian(std::span(head).subspan(sizeof(IccHeader))));
  return HasTags(*record) ? ReadTags(record, available, length) : kSuccess;
}

Status GenerateImage(IccProfileRecord* record) {
  if (!record->header) return kInvalidParameter;
  const uint32_t count = HasTags(*record) ? record->tagCount : 0;
  record->profileByteSize = DataBegin(count) + record->tagDataSize;
  if (record->header->profileSize != record->profileByteSize) return kInvalidProfile;
  const std::span<const IccTagEntry> tags = TagsOf(*record);
  const std::span<const uint8_t> data = DataOf(*record);
  if (tags.size() != count || data.size() != record->tagDataSize) return kInvalidProfile;

  ReleaseImage(record->profileBytes);
  record->profileBytes = static_cast<uint8_t*>(AllocateImage(record->profileByteSize));
  if (!record->profileBytes) return kFailure;
  WriteHeader(*record->header, record->profileBytes);
  ByteWriter writer(record->profileBytes + sizeof(IccHeader));
  writer.Big(count, 4);
  for (const IccTagEntry& entry : tags) {
    writer.Big(entry.signature, 4);
    writer.Big(entry.offset, 4);
    writer.Big(entry.size, 4);
  }
  writer.Copy(data.data(), data.size());
  return kSuccess;
}

}  // namespace qv
