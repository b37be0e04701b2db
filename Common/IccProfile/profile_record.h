// A record's parts as they can be relied on: what the record claims, as far as its buffers reach.
#pragma once

#include <cstddef>
#include <span>

#include "base/bytes.h"
#include "base/status.h"

namespace qv {

static_assert(sizeof(IccDateTime) == 12 && sizeof(IccTagEntry) == 12);
static_assert(sizeof(IccHeader) == 128 && offsetof(IccHeader, dateTime) == 24 && offsetof(IccHeader, signature) == 36);
static_assert(offsetof(IccHeader, attributes) == 56 && offsetof(IccHeader, illuminant) == 68);
static_assert(offsetof(IccHeader, profileId) == 84 && offsetof(IccHeader, reserved) == 100);
static_assert(sizeof(IccProfileRecord) == 56 && offsetof(IccProfileRecord, profileByteSize) == 4);
static_assert(offsetof(IccProfileRecord, tagDataSize) == 12 && offsetof(IccProfileRecord, header) == 20);
static_assert(offsetof(IccProfileRecord, tagCount) == 28 && offsetof(IccProfileRecord, tagTable) == 32);
static_assert(offsetof(IccProfileRecord, tagData) == 40 && offsetof(IccProfileRecord, profileBytes) == 48);
static_assert(sizeof(IccUnknownTagType) == 20 && offsetof(IccUnknownTagType, data) == 8);

constexpr uint32_t Signature(const char (&text)[5]) {
  uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<uint8_t>(text[i]);
  return number;
}

inline constexpr size_t kTableBegin = 132;  // header and tag count
constexpr uint64_t DataBegin(uint32_t tag_count) { return kTableBegin + uint64_t{sizeof(IccTagEntry)} * tag_count; }

// A count that is negative as a signed number is one of no tags.
bool HasTags(const IccProfileRecord& record);

// Both empty without tags. After a failed change the record may claim more than there is.
std::span<IccTagEntry> TagsOf(const IccProfileRecord& record);
std::span<uint8_t> DataOf(const IccProfileRecord& record);

// The first entry of a signature, null for none.
IccTagEntry* FindTag(const IccProfileRecord& record, uint32_t signature);

// The bytes of a tag. kInvalidProfile when they do not all lie in the data area.
Status ReadTag(const IccProfileRecord& record, const IccTagEntry& entry, ByteReader* reader);
bool LiesInside(const IccProfileRecord& record, const IccTagEntry& entry);

}  // namespace qv
