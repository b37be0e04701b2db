// CS_YCBCR: full-range YCbCr of JFIF. Cb and Cr are signed bytes without an offset; truncated, nothing is rounded.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

void RGBToYCbCrPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  const double y = 0.299 * r + 0.587 * g + 0.114 * b;
  const double cb = -0.16874 * r - 0.33126 * g + 0.5 * b;
  const double cr = 0.5 * r - 0.41869 * g - 0.08131 * b;
  dst[0] = ClampedByte(y);
  dst[1] = LowByte(Clamp(cb, -128, 127));
  dst[2] = LowByte(Clamp(cr, -128, 127));
}

void YCbCrToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const int y = src[0], cb = Signed(src[1]), cr = Signed(src[2]);
  StoreRgb(
      {ClampedByte(y + 1.402 * cr), ClampedByte(y - 0.3441363 * cb - 0.71413636 * cr), ClampedByte(y + 1.772 * cb)},
      dst, args);
}

}  // namespace

const Kernel RGBToYCbCr = PixelKernel<RGBToYCbCrPixel, 3, 3>("RGBToYCbCr");
const Kernel YCbCrToRGB = PixelKernel<YCbCrToRGBPixel, 3, 3>("YCbCrToRGB");

}  // namespace qv
