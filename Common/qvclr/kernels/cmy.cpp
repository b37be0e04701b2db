// CS_CMY: C, M, Y per pixel, each 255 minus its RGB counterpart. The complement undoes itself, so one row serves both
// directions.
#include <utility>

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/cmy.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

inline void CmyPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  uint8_t first = src[0], last = src[2];
  if (!args.rgb_first) std::swap(first, last);
  dst[1] = static_cast<uint8_t>(255 - src[1]);
  dst[0] = static_cast<uint8_t>(255 - first);
  dst[2] = static_cast<uint8_t>(255 - last);
}

Status CmyRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const hn::ScalableTag<uint8_t> d;
  const size_t lanes = hn::Lanes(d);
  const auto full = hn::Set(d, uint8_t{255});
  for (; width >= lanes; width -= lanes, src += 3 * lanes, dst += 3 * lanes) {
    hn::Vec<decltype(d)> first, middle, last;
    hn::LoadInterleaved3(d, src, first, middle, last);
    if (!args.rgb_first) std::swap(first, last);
    hn::StoreInterleaved3(hn::Sub(full, first), hn::Sub(full, middle), hn::Sub(full, last), d, dst);
  }
  return ScalarRow<CmyPixel, 3, 3>(src, dst, width, args);
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
HWY_EXPORT(CmyRow);
Status CmyRowOfThisCpu(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return HWY_DYNAMIC_DISPATCH(CmyRow)(src, dst, width, args);
}
}  // namespace
const Kernel RGBToCMY = {"RGBToCMY", CmyRowOfThisCpu, 3, 3};
const Kernel CMYToRGB = {"CMYToRGB", CmyRowOfThisCpu, 3, 3};
}  // namespace qv
#endif
