#include "base/readable.h"

#include "base/readable_posix.h"

namespace qv {
namespace {

// Populating visits every page, reading the map costs the same for every size; they meet at about half a megabyte.
constexpr size_t kPopulateBelow = size_t{512} << 10;

bool IsAccessible(const void* memory, size_t bytes, Access access, Mapping* last) {
  const auto begin = reinterpret_cast<uintptr_t>(memory);
  if (bytes == 0) return true;
  if (begin == 0 || bytes > UINTPTR_MAX - begin) return false;
  Verdict verdict = AskKernelMap(begin, begin + bytes, access, last);
  if (verdict == Verdict::kUnknown && bytes < kPopulateBelow) verdict = AskByPopulating(begin, begin + bytes, access);
  if (verdict == Verdict::kUnknown) verdict = AskMapText(begin, begin + bytes, access);
  return verdict == Verdict::kYes;
}

}  // namespace

bool IsReadable(const void* memory, size_t bytes) {
  Mapping last;
  return IsAccessible(memory, bytes, Access::kRead, &last);
}

bool IsWritable(const void* memory, size_t bytes) {
  Mapping last;
  return IsAccessible(memory, bytes, Access::kWrite, &last);
}

bool IsReadableAndWritable(const void* from, size_t from_bytes, const void* to, size_t to_bytes) {
  Mapping last;
  if (!IsAccessible(to, to_bytes, Access::kWrite, &last)) return false;
  const auto begin = reinterpret_cast<uintptr_t>(from);
  const bool within = begin >= last.begin && begin < last.end && from_bytes <= last.end - begin;
  return (within && last.readable) || IsReadable(from, from_bytes);
}

}  // namespace qv
