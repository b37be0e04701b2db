// Tag types as lists of fields, and the walks over such a list: from a tag's bytes to a structure in host order, from
// there to a copy in file order, from the copy to a tag's bytes, and the release of what a structure owns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "base/status.h"

namespace qv {

// An array that fills the rest of a tag. Its count is not in the tag.
struct Field {
  uint8_t width;                   // of a number, in bytes
  uint16_t at, count_at;           // of the pointer to the array and of its count (32 bits), in the structure
  bool count_stays_in_host_order;  // in a copy in file order too
};

struct TagCodec {
  uint32_t type;         // 0: any
  uint32_t struct_size;  // at most kLargestTagStructure
  std::span<const Field> fields;
};

inline constexpr size_t kLargestTagStructure = 128;
inline constexpr size_t kTagHeadBytes = 8;

// Fills the structure, whose arrays the caller releases also after a failure. kInvalidProfile when the bytes end too
// early; kFailure without memory.
Status DecodeTag(const TagCodec& codec, ByteReader reader, void* tag);

// Makes `copy` a deep copy of `source`. After a failure it owns nothing. kInvalidParameter for an array that is null or
// not readable; kFailure without memory.
Status ConstructTag(const TagCodec& codec, uint32_t type, const void* source, void* copy);

// Of a copy in file order: its size in a tag, without padding, and its bytes.
size_t EncodedBytes(const TagCodec& codec, const void* copy);
void EncodeTag(const TagCodec& codec, const void* copy, uint8_t* to);

void ReleaseTag(const TagCodec& codec, void* tag);

}  // namespace qv
