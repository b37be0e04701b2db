// Exported: the conversion of pixel buffers.
#include "base/boundary.h"
#include "base/readable.h"
#include "qvclr/library.h"
#include "qvclr/route.h"

using namespace qv;

extern "C" int32_t Q_ClrConvert(ColorConverter* hConverter, const void* pSrc, void* pDst, int32_t width, int32_t height,
                                int32_t nInAlign, int32_t nOutAlign) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!hConverter || !pSrc || !pDst) return kInvalidParameter;
    if (width <= 0 || height <= 0 || nInAlign < 0 || nOutAlign < 0) return kInvalidParameter;
    if (!IsReadable(hConverter, sizeof *hConverter)) return kBadPointer;

    const NamedSpaces spaces(hConverter);
    if (!spaces.source || !spaces.target) {  // equal spaces outside of the catalogue: no known size
      const Status status = CheckLive(hConverter);
      return Ok(status) ? kUnsupportedColorSpace : status;
    }
    const Frame in{spaces.source, width, height, nInAlign};
    const Frame out{spaces.target, width, height, nOutAlign};
    if (!IsReadable(pSrc, in.BytesToLastPixel()) || !IsWritable(pDst, out.BytesToLastPixel())) return kBadPointer;

    if (const Status status = CheckLive(hConverter); !Ok(status)) return status;
    if (pSrc == pDst && in.space == out.space && nInAlign != nOutAlign) return kInPlacePadding;
    return ConvertByConverter(*hConverter, in, static_cast<const uint8_t*>(pSrc), out, static_cast<uint8_t*>(pDst));
  });
}

extern "C" int32_t Q_ClrConvertDirect(uint32_t nSrcSpace, uint32_t nDstSpace, const void* pSrc, void* pDst,
                                      int32_t width, int32_t height, int32_t nInAlign, int32_t nOutAlign) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!pSrc || !pDst) return kInvalidParameter;
    if (width <= 0 || height <= 0) return kInvalidParameter;
    const Frame in{FindSpace(nSrcSpace), width, height, nInAlign};
    const Frame out{FindSpace(nDstSpace), width, height, nOutAlign};
    if (!in.space || !out.space) return kUnsupportedColorSpace;
    return ConvertDirect(in, static_cast<const uint8_t*>(pSrc), out, static_cast<uint8_t*>(pDst));
  });
}
