#include "profile_record.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "failure.h"
#include "names.h"
#include "profile_file.h"
#include "profile_value.h"

namespace client {
namespace {

constexpr uint32_t kVersionAt = 8;

void Expect(bool done, uint32_t signature, int32_t status) {
  if (!done) Fail("tag ", Quoted(signature), ": ", StatusText(status));
}

}  // namespace

bool Done(int32_t status) {
  return status == SUCCESS || status == ERR_ICC_PRIVATE_TAG || status == ERR_ICC_UNKNOWN_TAG_TYPE ||
         status == ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE;
}

DecodedTag::DecodedTag(const IccProfileRecord& record, uint32_t signature)
    : type_(Q_GetICCTagTypeSig(&record, signature)), status_(Q_GetICCTagData(&record, bytes_, signature)) {}

DecodedTag::~DecodedTag() {
  if (Done(status_)) Q_FreeICCTagType(bytes_, type_);
}

ProfileRecord::ProfileRecord() {
  Q_InitICCProfile(&record_, sizeof record_);
  status_ = Q_InitICCHeader(&record_);
  if (status_ != SUCCESS) Fail("a new profile: ", StatusText(status_));
}

ProfileRecord::ProfileRecord(std::span<const uint8_t> profile) {
  std::vector<uint8_t> copy(profile.begin(), profile.end());
  const std::span<uint8_t> size = std::span(copy).first(4), version = std::span(copy).subspan(kVersionAt, 4);
  const uint32_t true_size = BigEndian(size), true_version = BigEndian(version);
  const auto there = static_cast<uint32_t>(copy.size());
  StoreBigEndian(std::min(true_size, there), size);
  StoreBigEndian(std::max(true_version, kFormatFour), version);
  Q_InitICCProfile(&record_, sizeof record_);
  status_ = Q_FillICCProfileStructure(&record_, copy.data(), there);
  if (!record_.header) return;
  record_.header->profileSize = true_size;
  record_.header->version = true_version;
}

ProfileRecord::~ProfileRecord() { Q_FreeICCProfile(&record_); }

std::span<IccTagEntry> ProfileRecord::Table() const {
  const bool none = record_.tagCount > INT32_MAX || !record_.tagTable;  // negative as a signed number
  return {record_.tagTable, none ? 0 : record_.tagCount};
}

uint64_t ProfileRecord::DataBegin() const { return kTagsAt + uint64_t{sizeof(IccTagEntry)} * record_.tagCount; }

DecodedTag ProfileRecord::Decoded(size_t place) {
  struct First {  // the tag stands first in the table for as long as it is read
    ~First() { std::swap(table[0], table[place]); }
    std::span<IccTagEntry> table;
    size_t place;
  };
  const std::span<IccTagEntry> table = Table();
  const First first{table, place};
  std::swap(table[0], table[place]);
  return DecodedTag(record_, table[0].signature);
}

std::span<const uint8_t> ProfileRecord::TagBytes(size_t place) const {
  const IccTagEntry tag = Table()[place];
  const uint64_t begin = DataBegin(), end = begin + record_.tagDataSize;
  if (tag.offset < begin || tag.offset > end || tag.size > end - tag.offset) return {};
  return {record_.tagData + (tag.offset - begin), tag.size};
}

void ProfileRecord::Append(uint32_t signature, uint32_t type, const void* structure) {
  const int32_t status = Q_SetICCTagData(&record_, structure, signature, type);
  Expect(Done(status), signature, status);
  Q_SetICCProfileId(&record_);
}

void ProfileRecord::Set(uint32_t signature, uint32_t type, const void* structure) {
  Remove(signature);
  Append(signature, type, structure);
}

// Bytes that the library shall not take for a structure are set as a type that it does not know, and get their own
// head where they lie then.
void ProfileRecord::SetBytes(uint32_t signature, std::span<const uint8_t> tag) {
  constexpr uint32_t kNoType = 0;
  const std::vector<uint8_t> copy(tag.begin(), tag.end());  // they may be the record's own
  const IccUnknownTagType raw{.data = const_cast<uint8_t*>(copy.data()) + kTagHeadBytes,
                              .dataSize = static_cast<uint32_t>(copy.size() - kTagHeadBytes)};
  Set(signature, kNoType, &raw);
  std::memcpy(record_.tagData + (Table().back().offset - DataBegin()), copy.data(), kTagHeadBytes);
}

// What goes with a tag: its padding, so that all others stay on multiples of four, but nothing that others use.
uint32_t ProfileRecord::OwnBytes(const IccTagEntry& tag) const {
  const uint64_t begin = tag.offset, end = begin + tag.size, padded = end + (4 - tag.size % 4) % 4;
  const auto used = [&](uint64_t from, uint64_t to) {
    return std::ranges::any_of(Table(), [&](const IccTagEntry& other) {
      return &other != &tag && other.offset < to && uint64_t{other.offset} + other.size > from;
    });
  };
  if (used(begin, end)) return 0;
  const bool padding_is_free = padded <= DataBegin() + record_.tagDataSize && !used(end, padded);
  return static_cast<uint32_t>((padding_is_free ? padded : end) - begin);
}

bool ProfileRecord::Remove(uint32_t signature) {
  for (bool any = false;; any = true) {
    const std::span<IccTagEntry> table = Table();
    const auto found = std::ranges::find_if(table, [&](IccTagEntry tag) { return tag.signature == signature; });
    if (found == table.end()) return any;
    found->size = OwnBytes(*found);
    const int32_t status = Q_DeleteICCTag(&record_, signature, nullptr);
    Expect(status == SUCCESS, signature, status);
    if (record_.tagCount > 0) continue;
    record_.tagTable = nullptr;  // the library leaves the numbers of the last tag as they are
    record_.tagData = nullptr;
    record_.tagDataSize = 0;
    record_.header->profileSize = kTagsAt;
  }
}

std::span<const uint8_t> ProfileRecord::Generate() {
  if (const int32_t status = Q_GenerateICCPointer(&record_); status != SUCCESS) Fail("profile: ", StatusText(status));
  return {record_.profileBytes, record_.profileByteSize};
}

}  // namespace client
