// CS_RGB and CS_BGR: the three bytes of every pixel in the opposite order. The byte-order flag has no meaning here.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/swap.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/reverse-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

inline void SwapPixel(const uint8_t* src, uint8_t* dst, const RowArgs& /*args*/) {
  const uint8_t first = src[0], middle = src[1], last = src[2];
  dst[0] = last;
  dst[1] = middle;
  dst[2] = first;
}

Status SwapRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return BlockRow<SwapPixel, 3, 3, kReverseBlock>(src, dst, width, args, ReversePixels<false>);
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(SwapRow)
}  // namespace
const Kernel RGBToBGR = {"RGBToBGR", SwapRowOfThisCpu, 3, 3};
const Kernel BGRToRGB = {"BGRToRGB", SwapRowOfThisCpu, 3, 3};
}  // namespace qv
#endif
