#include "base/bitmap.h"

#include <cstring>

#include "base/memory.h"
#include "base/readable.h"
#include "base/sizes.h"

namespace qv {

static_assert(sizeof(BitmapHandle) == 32);

Status FillBitmap(BitmapHandle* bitmap, uint32_t record_size, const BitmapHeader& header, const uint8_t* block,
                  size_t line_distance) {
  if (record_size != sizeof(BitmapHandle)) return kInvalidStructSize;
  if (!IsWritable(bitmap, sizeof(BitmapHandle))) return kBadPointer;
  if (header.width <= 0 || header.height == 0) return kInvalidParameter;
  const auto width = static_cast<size_t>(header.width);
  const auto lines = static_cast<size_t>(header.height < 0 ? -int64_t{header.height} : int64_t{header.height});
  const size_t line_bytes = (width * 24 + 31) / 32 * 4;
  const size_t image_bytes = Product(line_bytes, lines);
  if (image_bytes > UINT32_MAX) return kNoMemory;  // the record counts in 32 bits

  auto bits = NewArray<uint8_t>(image_bytes);
  if (!bits) return kNoMemory;
  for (size_t y = 0; y < lines; ++y) std::memcpy(&bits[y * line_bytes], block + y * line_distance, width * 3);
  const BitmapHandle filled = {sizeof(BitmapHandle),
                               24,
                               header.width,
                               header.height,
                               static_cast<uint32_t>(line_bytes),
                               static_cast<uint32_t>(image_bytes),
                               bits.release()};
  std::memcpy(bitmap, &filled, sizeof filled);
  return kSuccess;
}

Status FreeBitmap(BitmapHandle* bitmap) {
  if (!bitmap) return kInvalidParameter;
  if (!IsWritable(bitmap, sizeof(BitmapHandle))) return kBadPointer;
  BitmapHandle filled;
  std::memcpy(&filled, bitmap, sizeof filled);
  if (filled.uStructSize != sizeof(BitmapHandle)) return kInvalidStructSize;
  Release(filled.pBits);
  std::memset(bitmap, 0, sizeof(BitmapHandle));
  return kSuccess;
}

}  // namespace qv
