// CS_RGB and CS_BGR: the three bytes of every pixel in the opposite order. The byte-order flag has no meaning here.
#include <cstring>

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/swap.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

inline void SwapPixel(const uint8_t* src, uint8_t* dst, const RowArgs& /*args*/) {
  const uint8_t first = src[0], middle = src[1], last = src[2];
  dst[0] = last;
  dst[1] = middle;
  dst[2] = first;
}

Status SwapRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const hn::ScalableTag<uint8_t> d;
  const size_t lanes = hn::Lanes(d);
  for (; width >= lanes; width -= lanes, src += 3 * lanes, dst += 3 * lanes) {
    hn::Vec<decltype(d)> first, middle, last;
    hn::LoadInterleaved3(d, src, first, middle, last);
    hn::StoreInterleaved3(last, middle, first, d, dst);
  }
  return ScalarRow<SwapPixel, 3, 3>(src, dst, width, args);
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
HWY_EXPORT(SwapRow);
Status SwapRowOfThisCpu(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return HWY_DYNAMIC_DISPATCH(SwapRow)(src, dst, width, args);
}
}  // namespace
const Kernel RGBToBGR = {"RGBToBGR", SwapRowOfThisCpu, 3, 3};
const Kernel BGRToRGB = {"BGRToRGB", SwapRowOfThisCpu, 3, 3};
}  // namespace qv
#endif
