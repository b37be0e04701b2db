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
    const Status live = CheckLive(hConverter);  // one on the list is readable
    if (!Ok(live) && !IsReadable(hConverter, sizeof *hConverter)) return kBadPointer;

    const NamedSpaces spaces(hConverter);
    // Equal spaces outside of the catalogue have no known size.
    if (!spaces.source || !spaces.target) return Ok(live) ? kUnsupportedColorSpace : live;
    Frame in{spaces.source, width, height, nInAlign}, out{spaces.target, width, height, nOutAlign};
    const auto* src = static_cast<const uint8_t*>(pSrc);
    auto* dst = static_cast<uint8_t*>(pDst);
    if (!AreAccessible(in, src, out, dst, &Frame::BytesToLastPixel)) return kBadPointer;
    in.tested = in.BytesToLastPixel();
    out.tested = out.BytesToLastPixel();

    if (!Ok(live)) return live;
    if (pSrc == pDst && in.space == out.space && nInAlign != nOutAlign) return kInPlacePadding;
    return ConvertByConverter(*hConverter, in, src, out, dst);
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
