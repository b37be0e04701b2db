#include "base/readable.h"

#include "base/readable_posix.h"

namespace qv {
namespace {

// Populating visits every page, reading the map costs the same for every size; they meet at about half a megabyte.
constexpr size_t kPopulateBelow = size_t{512} << 10;

bool IsAccessible(const void* memory, size_t bytes, Access access) {
  const auto begin = reinterpret_cast<uintptr_t>(memory);
  if (bytes == 0) return true;
  if (begin == 0 || bytes > UINTPTR_MAX - begin) return false;
  Verdict verdict = AskKernelMap(begin, begin + bytes, access);
  if (verdict == Verdict::kUnknown && bytes < kPopulateBelow) verdict = AskByPopulating(begin, begin + bytes, access);
  if (verdict == Verdict::kUnknown) verdict = AskMapText(begin, begin + bytes, access);
  return verdict == Verdict::kYes;
}

}  // namespace

bool IsReadable(const void* memory, size_t bytes) { return IsAccessible(memory, bytes, Access::kRead); }
bool IsWritable(const void* memory, size_t bytes) { return IsAccessible(memory, bytes, Access::kWrite); }

}  // namespace qv
