// Exported: the release of bitmaps that the library filled.
#include "base/bitmap.h"
#include "base/boundary.h"

using namespace qv;

extern "C" int32_t Q_FreeBitmap(BitmapHandle* pBitmap) {
  return AtBoundary(kNoMemory, [&] { return FreeBitmap(pBitmap); });
}
