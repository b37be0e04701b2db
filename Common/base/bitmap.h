// 24-bit bitmaps that the library fills and its callers release with Q_FreeBitmap.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace qv {

// A device-independent-bitmap header as far as it is used here.
struct BitmapHeader {
  int32_t width;
  int32_t height;  // negative for top-down lines
};

// Lays the lines of `block`, which stand `line_distance` bytes apart, out by the bitmap's own line rule. Only the
// pixels are read. A record size other than 32: kInvalidStructSize; not writable: kBadPointer; no memory: kNoMemory.
Status FillBitmap(BitmapHandle* bitmap, uint32_t record_size, const BitmapHeader& header, const uint8_t* block,
                  size_t line_distance);
Status FreeBitmap(BitmapHandle* bitmap);

}  // namespace qv
