// Exported: conversions whose result is a bitmap.
#include <algorithm>

#include "base/bitmap.h"
#include "base/boundary.h"
#include "base/readable.h"
#include "base/sizes.h"
#include "qvclr/frame.h"
#include "qvclr/library.h"

using namespace qv;

namespace {

size_t AtLeast0(int32_t value) { return value > 0 ? static_cast<size_t>(value) : 0; }

// Lines of R, G, B with their padding, in a block that also holds what a bitmap header claims for them: its image size
// counts each byte of padding three times (intended), and its lines are multiples of four bytes.
class BitmapBlock {
 public:
  BitmapBlock(int32_t width, int32_t height, int32_t padding)
      : width_(width), height_(height > 0 ? -height : 0), line_distance_(3 * AtLeast0(width) + AtLeast0(padding)) {
    const size_t claimed = std::max(line_distance_ + 2 * AtLeast0(padding), 3 * AtLeast0(width) + 3);
    bits_ = NewArray<uint8_t>(Product(claimed, AtLeast0(height)));
  }
  uint8_t* bits() const { return bits_.get(); }
  Status Fill(BitmapHandle* bitmap, uint32_t record_size) const {
    return FillBitmap(bitmap, record_size, {width_, height_}, bits_.get(), line_distance_);
  }

 private:
  int32_t width_, height_;  // as a header has them: top-down
  size_t line_distance_;
  Owned<uint8_t[]> bits_;
};

}  // namespace

extern "C" int32_t Q_ClrConvertToBitmap(ColorConverter* hConverter, const void* pSrc, BitmapHandle* pBitmap,
                                        uint32_t uBitmapSize, int32_t width, int32_t height, int32_t nInAlign,
                                        int32_t nOutAlign) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!pSrc || !pBitmap) return kInvalidParameter;
    if (!IsReadable(hConverter, sizeof *hConverter)) return kBadPointer;
    const NamedSpaces spaces(hConverter);
    const Frame in{spaces.source, width, height, nInAlign};
    const bool has_size = spaces.source && width > 0 && height > 0;
    if (has_size && !IsReadable(pSrc, in.BytesWithPadding())) return kBadPointer;
    if (const Status status = CheckLive(hConverter); !Ok(status)) return status;
    if (!spaces.target || !IsRgb(*spaces.target)) return kUnsupportedColorSpace;
    const BitmapBlock block(width, height, nOutAlign);
    if (!block.bits()) return kNoMemory;
    const auto status =
        static_cast<Status>(Q_ClrConvert(hConverter, pSrc, block.bits(), width, height, nInAlign, nOutAlign));
    if (Ok(status)) static_cast<void>(block.Fill(pBitmap, uBitmapSize));  // its result is not told: intended
    return status;
  });
}

extern "C" int32_t Q_ClrConvertDirectToBitmap(uint32_t nSrcSpace, uint32_t nDstSpace, const void* pSrc,
                                              BitmapHandle* pBitmap, uint32_t uBitmapSize, int32_t width,
                                              int32_t height, int32_t nInAlign, int32_t nOutAlign) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!pSrc || !pBitmap) return kInvalidParameter;
    if (!IsRgb(nDstSpace)) return kInvalidParameter;
    const BitmapBlock block(width, height, nOutAlign);
    if (!block.bits()) return kNoMemory;
    const auto status = static_cast<Status>(
        Q_ClrConvertDirect(nSrcSpace, nDstSpace, pSrc, block.bits(), width, height, nInAlign, nOutAlign));
    return Ok(status) ? block.Fill(pBitmap, uBitmapSize) : status;
  });
}
