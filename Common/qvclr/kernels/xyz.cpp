// CS_XYZ: tristimulus values on the scale of the RGB bytes, without a white point. The two matrices are kept apart and
// are no exact inverses of each other: a round trip may move a value by a step.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/xyz.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/matrix-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

inline void RGBToXYZPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  dst[0] = LowByte(0.63267 * r + 0.228457 * g + 0.0 * b);  // at most 249: nothing is to be clamped
  dst[1] = LowByte(0.204556 * r + 0.737352 * g + 0.00951424 * b);
  dst[2] = LowByte(0.126995 * r + 0.0341908 * g + 0.815696 * b);
}

inline void XYZToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const double x = src[0], y = src[1], z = src[2];
  StoreRgb({ClampToByte(TruncateToInt32(1.75526 * x - 0.544134 * y + 0.00634681 * z)),
            ClampToByte(TruncateToInt32(-0.483679 * x + 1.50688 * y - 0.0175762 * z)),
            ClampToByte(TruncateToInt32(-0.253 * x + 0.0215528 * y + 1.2257 * z))},
           dst, args);
}

// Whole numbers that give the doubles' results, their rounding errors included, for all pixels.
struct XyzOfRgb {
  [[maybe_unused]] static constexpr forms::Form kFirst = {{663402, 239555, 0, 0}, 5, 20},
                                                kMiddle = {{219640333, 791725682, 10215837, 0}, 0, 30},
                                                kLast = {{2130624, 573626, 13685106, 0}, 171, 24};
};
struct RgbOfXyz {
  [[maybe_unused]] static constexpr forms::Form kFirst = {{471174017, -146064857, 1703709, 0}, 25, 28},
                                                kMiddle = {{-129836593, 404500019, -4718075, 0}, 55, 28},
                                                kLast = {{-67914171, 5785535, 329021339, 0}, 244, 28};
};

Status RGBToXYZRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return MatrixRow<RGBToXYZPixel, XyzOfRgb, true>(src, dst, width, args);
}
Status XYZToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return MatrixRow<XYZToRGBPixel, RgbOfXyz, false>(src, dst, width, args);
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToXYZ, 3, 3)
QV_PIXEL_KERNEL(XYZToRGB, 3, 3)
}  // namespace qv
#endif
