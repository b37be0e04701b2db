#include "base/readable.h"

#include <windows.h>

#include <cstdint>

namespace qv {
namespace {

constexpr DWORD kWritable = PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
constexpr DWORD kReadable = kWritable | PAGE_READONLY | PAGE_EXECUTE_READ;

// Walks the regions of pages with equal protection that cover the range.
bool IsCovered(const void* memory, size_t bytes, DWORD protections) {
  auto at = reinterpret_cast<uintptr_t>(memory);
  if (bytes == 0) return true;
  if (at == 0 || bytes > UINTPTR_MAX - at) return false;
  const uintptr_t end = at + bytes;
  while (at < end) {
    MEMORY_BASIC_INFORMATION region;
    if (VirtualQuery(reinterpret_cast<const void*>(at), &region, sizeof region) == 0) return false;
    if (region.State != MEM_COMMIT || (region.Protect & protections) == 0 || (region.Protect & PAGE_GUARD))
      return false;
    at = reinterpret_cast<uintptr_t>(region.BaseAddress) + region.RegionSize;
  }
  return true;
}

}  // namespace

bool IsReadable(const void* memory, size_t bytes) { return IsCovered(memory, bytes, kReadable); }
bool IsWritable(const void* memory, size_t bytes) { return IsCovered(memory, bytes, kWritable); }
bool IsReadableAndWritable(const void* from, size_t from_bytes, const void* to, size_t to_bytes) {
  return IsReadable(from, from_bytes) && IsWritable(to, to_bytes);
}

}  // namespace qv
