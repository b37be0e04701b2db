#include "ImageFile/copy_range.h"

#include <algorithm>

#include "base/memory.h"

namespace qv {

bool CopyRange(File& from, int64_t begin, int64_t end, File& to) {
  constexpr size_t kBlock = size_t{1} << 18;
  if (begin >= end) return true;
  auto left = static_cast<uint64_t>(end - begin);
  const auto buffer = NewArray<uint8_t>(std::min<uint64_t>(left, kBlock));
  if (!buffer || !from.Seek(begin, Origin::kStart)) return false;
  while (left > 0) {
    const size_t step = std::min<uint64_t>(left, kBlock);
    size_t taken = 0;
    if (!from.Read(buffer.get(), step, &taken) || taken != step || !to.Write(buffer.get(), step)) return false;
    left -= step;
  }
  return true;
}

}  // namespace qv
