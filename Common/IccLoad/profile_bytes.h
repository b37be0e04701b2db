// The profile bytes of a record, as readers gather them.
#pragma once

#include <cstddef>

#include "base/status.h"

namespace qv {

// Adds bytes behind those that the record has; room is kept for more. kFailure without memory.
Status AppendProfileBytes(IccProfileRecord* record, const void* bytes, size_t count);

// Gives back the room that is left.
void TrimProfileBytes(IccProfileRecord* record);

}  // namespace qv
