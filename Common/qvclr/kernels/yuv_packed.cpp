// The packed video layouts CS_YUY2, CS_UYVY (4:2:2) and CS_Y41P (4:1:1): groups of pixels that share their chroma.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/yuv_packed.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/packed-inl.h"

#ifndef QV_YUV_PACKED_ONCE
#define QV_YUV_PACKED_ONCE
namespace qv {
namespace {

template <const Layout& kLayout>
Status PackedToRgbGroups(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; width -= kLayout.pixels, src += kLayout.bytes) {
    uint8_t group[12];  // read whole: in place, the pixels may cover it
    for (size_t i = 0; i < kLayout.bytes; ++i) group[i] = src[i];
    for (size_t x = 0; x < kLayout.pixels; ++x, dst += 3) {
      StoreRgb(RgbFromStudio({group[LumaAt(kLayout, x)], group[UAt(kLayout, x)], group[VAt(kLayout, x)]}), dst, args);
    }
  }
  return kSuccess;
}

// A chroma sample is the mean of its pixels' bytes, rounded down.
template <const Layout& kLayout>
Status RgbToPackedGroups(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; width -= kLayout.pixels, dst += kLayout.bytes) {
    uint8_t group[12] = {};
    for (size_t chroma = 0; chroma < kLayout.pixels; chroma += kLayout.sharing) {
      int u = 0, v = 0;
      for (size_t x = chroma; x < chroma + kLayout.sharing; ++x, src += 3) {
        const Studio yuv = StudioFromRgb(LoadRgb(src, args));
        group[LumaAt(kLayout, x)] = yuv.y;
        u += yuv.u;
        v += yuv.v;
      }
      group[UAt(kLayout, chroma)] = static_cast<uint8_t>(u / kLayout.sharing);
      group[VAt(kLayout, chroma)] = static_cast<uint8_t>(v / kLayout.sharing);
    }
    for (size_t i = 0; i < kLayout.bytes; ++i) dst[i] = group[i];
  }
  return kSuccess;
}

}  // namespace
}  // namespace qv
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

// By blocks, then what is left of the row group by group.
template <const Layout& kLayout>
Status PackedToRgbRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
#if QV_HAS_VECTORS
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    const RgbFromStudioVectors matrix;
    for (; width >= kBlock; width -= kBlock, src += BytesOf(kLayout, kBlock), dst += 3 * kBlock) {
      StoreWordsInOrder<kSwapped>(matrix.OfBlock(PackedPairs<kLayout>(src)), dst);
    }
    return PackedToRgbGroups<kLayout>(src, dst, width, args);
  });
#else
  return PackedToRgbGroups<kLayout>(src, dst, width, args);
#endif
}
template <const Layout& kLayout>
Status RgbToPackedRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
#if QV_HAS_VECTORS
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    const StudioFromRgbVectors matrix;
    for (; width >= kBlock; width -= kBlock, src += 3 * kBlock, dst += BytesOf(kLayout, kBlock)) {
      StorePacked<kLayout>(matrix.OfBlock(PixelPairs<kSwapped>(src)), dst);
    }
    return RgbToPackedGroups<kLayout>(src, dst, width, args);
  });
#else
  return RgbToPackedGroups<kLayout>(src, dst, width, args);
#endif
}

Status YUY2ToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return PackedToRgbRow<kYuy2>(src, dst, width, args);
}
Status UYVYToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return PackedToRgbRow<kUyvy>(src, dst, width, args);
}
Status Y41PToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return PackedToRgbRow<kY41p>(src, dst, width, args);
}
Status RGBToYUY2Row(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return RgbToPackedRow<kYuy2>(src, dst, width, args);
}
Status RGBToUYVYRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return RgbToPackedRow<kUyvy>(src, dst, width, args);
}
Status RGBToY41PRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return RgbToPackedRow<kY41p>(src, dst, width, args);
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(YUY2ToRGBRow)
QV_ROW_OF_THIS_CPU(UYVYToRGBRow)
QV_ROW_OF_THIS_CPU(Y41PToRGBRow)
QV_ROW_OF_THIS_CPU(RGBToYUY2Row)
QV_ROW_OF_THIS_CPU(RGBToUYVYRow)
QV_ROW_OF_THIS_CPU(RGBToY41PRow)

constexpr Kernel ToRgb(const char* name, RowFn row, const Layout& layout) noexcept {
  return {name, row, layout.bytes, static_cast<uint8_t>(3 * layout.pixels), layout.pixels};
}
constexpr Kernel FromRgb(const char* name, RowFn row, const Layout& layout) noexcept {
  return {name, row, static_cast<uint8_t>(3 * layout.pixels), layout.bytes, layout.pixels};
}
}  // namespace

const Kernel YUY2ToRGB = ToRgb("YUY2ToRGB", YUY2ToRGBRowOfThisCpu, kYuy2);
const Kernel UYVYToRGB = ToRgb("UYVYToRGB", UYVYToRGBRowOfThisCpu, kUyvy);
const Kernel Y41PToRGB = ToRgb("Y41PToRGB", Y41PToRGBRowOfThisCpu, kY41p);
const Kernel RGBToYUY2 = FromRgb("RGBToYUY2", RGBToYUY2RowOfThisCpu, kYuy2);
const Kernel RGBToUYVY = FromRgb("RGBToUYVY", RGBToUYVYRowOfThisCpu, kUyvy);
const Kernel RGBToY41P = FromRgb("RGBToY41P", RGBToY41PRowOfThisCpu, kY41p);

}  // namespace qv
#endif
