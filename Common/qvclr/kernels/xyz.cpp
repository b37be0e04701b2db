// CS_XYZ: tristimulus values on the scale of the RGB bytes, without a white point. The two matrices are kept apart and
// are no exact inverses of each other: a round trip may move a value by a step.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

void RGBToXYZPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  dst[0] = LowByte(0.63267 * r + 0.228457 * g + 0.0 * b);  // at most 249: nothing is to be clamped
  dst[1] = LowByte(0.204556 * r + 0.737352 * g + 0.00951424 * b);
  dst[2] = LowByte(0.126995 * r + 0.0341908 * g + 0.815696 * b);
}

void XYZToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const double x = src[0], y = src[1], z = src[2];
  StoreRgb({ClampToByte(TruncateToInt32(1.75526 * x - 0.544134 * y + 0.00634681 * z)),
            ClampToByte(TruncateToInt32(-0.483679 * x + 1.50688 * y - 0.0175762 * z)),
            ClampToByte(TruncateToInt32(-0.253 * x + 0.0215528 * y + 1.2257 * z))},
           dst, args);
}

}  // namespace

const Kernel RGBToXYZ = PixelKernel<RGBToXYZPixel, 3, 3>("RGBToXYZ");
const Kernel XYZToRGB = PixelKernel<XYZToRGBPixel, 3, 3>("XYZToRGB");

}  // namespace qv
