// The three ways to test memory that readable_posix.cpp chooses from; each answers by itself, or that it cannot.
#pragma once

#include <cstdint>

namespace qv {

enum class Access : uint8_t { kRead, kWrite };
enum class Verdict : uint8_t { kNo, kYes, kUnknown };

// [begin, end), not empty. The two that read the map also take a file's mapping for readable behind the file's end, and
// guard pages within a mapping.
Verdict AskKernelMap(uintptr_t begin, uintptr_t end, Access access);     // PROCMAP_QUERY: Linux 6.11 and later
Verdict AskByPopulating(uintptr_t begin, uintptr_t end, Access access);  // MADV_POPULATE_*: Linux 5.14 and later
Verdict AskMapText(uintptr_t begin, uintptr_t end, Access access);       // /proc/self/maps

// Closes the descriptor that AskKernelMap keeps; it opens another when it is called again.
void CloseKernelMap();

}  // namespace qv
