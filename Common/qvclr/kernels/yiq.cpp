// CS_YIQ: NTSC's YIQ (1953), each component rescaled from its span to 0..255. The luma span of 263 is kept on purpose:
// white is stored with Y = 247.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

void RGBToYIQPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  dst[0] = ClampedByte((0.299 * r + 0.587 * g + 0.114 * b) / 263 * 255 + 0.5);
  dst[1] = ClampedByte((0.596 * r - 0.274 * g - 0.322 * b + 152) / 303 * 255 + 0.5);
  dst[2] = ClampedByte((0.212 * r - 0.523 * g + 0.311 * b + 134) / 267 * 255 + 0.5);
}

void YIQToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const int y = TruncateToInt32(src[0] / 255.0 * 263);
  const int i = TruncateToInt32(src[1] / 255.0 * 303 - 152);
  const int q = TruncateToInt32(src[2] / 255.0 * 267 - 134);
  StoreRgb({ClampedByte(y + 0.956 * i + 0.621 * q), ClampedByte(y - 0.272 * i - 0.647 * q),
            ClampedByte(y - 1.105 * i + 1.702 * q)},
           dst, args);
}

}  // namespace

const Kernel RGBToYIQ = PixelKernel<RGBToYIQPixel, 3, 3>("RGBToYIQ");
const Kernel YIQToRGB = PixelKernel<YIQToRGBPixel, 3, 3>("YIQToRGB");

}  // namespace qv
