// Adding tags to a record, and taking them out.
#pragma once

#include "IccProfile/profile_record.h"

namespace qv {

// Adds an entry and room for `bytes` bytes behind all others, padded to a multiple of four with zeros.
// kInvalidParameter for a record without header or with a negative count; kFailure without memory, or when the profile
// would exceed what its numbers hold. After want of memory the count stays raised (intended).
Status AppendTag(IccProfileRecord* record, uint32_t signature, size_t bytes, uint8_t** room);

// Takes out an entry of the record and its bytes, which must lie inside; padding behind them stays.
void RemoveTag(IccProfileRecord* record, IccTagEntry* entry);

void ClearProfileId(IccProfileRecord* record);

}  // namespace qv
