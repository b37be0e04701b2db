// The three ways to test memory that readable_posix.cpp chooses from; each answers by itself, or that it cannot.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qv {

enum class Access : uint8_t { kRead, kWrite };
enum class Verdict : uint8_t { kNo, kYes, kUnknown };

// A range of addresses with equal rights.
struct Mapping {
  uintptr_t begin = 0, end = 0;
  bool readable = false, writable = false;
};

// [begin, end), not empty. The two that read the map also take a file's mapping for readable behind the file's end, and
// guard pages within a mapping.
// PROCMAP_QUERY: Linux 6.11 and later. Tells the mapping in which the range ends.
Verdict AskKernelMap(uintptr_t begin, uintptr_t end, Access access, Mapping* last);
Verdict AskByPopulating(uintptr_t begin, uintptr_t end, Access access);  // MADV_POPULATE_*: Linux 5.14 and later
Verdict AskMapText(uintptr_t begin, uintptr_t end, Access access);       // /proc/self/maps

// Closes the descriptor that AskKernelMap keeps; it opens another when it is called again.
void CloseKernelMap();

}  // namespace qv
