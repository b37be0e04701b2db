// CS_CMY: C, M, Y per pixel, each 255 minus its RGB counterpart. The complement undoes itself, so one row serves both
// directions.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/cmy.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/reverse-inl.h"

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

HWY_INLINE void Complement(const uint8_t* src, uint8_t* dst) {
  const U8 d;
  const auto first = hn::LoadU(d, src), middle = hn::LoadU(d, src + kBlock), last = hn::LoadU(d, src + 2 * kBlock);
  hn::StoreU(hn::Not(first), d, dst);
  hn::StoreU(hn::Not(middle), d, dst + kBlock);
  hn::StoreU(hn::Not(last), d, dst + 2 * kBlock);
}

Status CmyRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  if (args.rgb_first) return BlockRow<CmyPixel, 3, 3>(src, dst, width, args, Complement);
  return BlockRow<CmyPixel, 3, 3, kReverseBlock>(src, dst, width, args, ReversePixels<true>);
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
