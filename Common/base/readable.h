// Tests of memory that a caller handed over. They never change it, and any number of threads may run them.
#pragma once

#include <cstddef>

namespace qv {

// True when each of the `bytes` bytes can be read (written); always true for 0 bytes.
bool IsReadable(const void* memory, size_t bytes);
bool IsWritable(const void* memory, size_t bytes);

// Both at once, at little more than the cost of one where the two lie in the same mapping.
bool IsReadableAndWritable(const void* from, size_t from_bytes, const void* to, size_t to_bytes);

}  // namespace qv
