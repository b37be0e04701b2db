// CS_CMY: C, M, Y per pixel, each 255 minus its RGB counterpart. The complement undoes itself, so one row serves both
// directions.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/cmy.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

inline void CmyPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  uint8_t first = src[0], last = src[2];
  if (!args.rgb_first) std::swap(first, last);
  dst[1] = static_cast<uint8_t>(255 - src[1]);
  dst[0] = static_cast<uint8_t>(255 - first);
  dst[2] = static_cast<uint8_t>(255 - last);
}

Status CmyRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return BlockRow<CmyPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
    const RgbPlanes rgb = LoadRgbPlanes(from, args);
    StorePlanes({hn::Not(rgb.r), hn::Not(rgb.g), hn::Not(rgb.b)}, to);
  });
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(CmyRow)
}  // namespace
const Kernel RGBToCMY = {"RGBToCMY", CmyRowOfThisCpu, 3, 3};
const Kernel CMYToRGB = {"CMYToRGB", CmyRowOfThisCpu, 3, 3};
}  // namespace qv
#endif
