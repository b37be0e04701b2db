// CS_YCBCR: full-range YCbCr of JFIF. Cb and Cr are signed bytes without an offset; truncated, nothing is rounded.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/ycbcr.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/matrix-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

// Cb is exact in whole numbers.
struct YCbCrOfRgb {
  [[maybe_unused]] static constexpr forms::Form kFirst = forms::OfBytes(0.299, 0.587, 0.114, 0),
                                                kMiddle = {{-11059, -21709, 32768, 0}, 0, 16, true},
                                                kLast = forms::OfBytes(0.5, -0.41869, -0.08131, 0, true);
  template <typename Real>
  static HWY_INLINE Real First(Real r, Real g, Real b) {
    return 0.299 * r + 0.587 * g + 0.114 * b;
  }
  template <typename Real>
  static HWY_INLINE Real Middle(Real r, Real g, Real b) {
    return -0.16874 * r - 0.33126 * g + 0.5 * b;
  }
  template <typename Real>
  static HWY_INLINE Real Last(Real r, Real g, Real b) {
    return 0.5 * r - 0.41869 * g - 0.08131 * b;
  }
};

// What Cr and Cb add to Y.
struct RgbOfYCbCr {
  [[maybe_unused]] static constexpr forms::Form kFirst = {{22971, 0, 0, 0}, 18, 14},
                                                kMiddle = {{-2995305, -1443412, 0, 0}, 25, 22},
                                                kLast = {{0, 29033, 0, 0}, 48, 14};
};

inline void RGBToYCbCrPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb rgb = LoadRgb(src, args);
  const double r = rgb.r, g = rgb.g, b = rgb.b;
  dst[0] = ClampedByte(YCbCrOfRgb::First(r, g, b));
  dst[1] = LowByte(Clamp(YCbCrOfRgb::Middle(r, g, b), -128, 127));
  dst[2] = LowByte(Clamp(YCbCrOfRgb::Last(r, g, b), -128, 127));
}

inline void YCbCrToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const int y = src[0], cb = Signed(src[1]), cr = Signed(src[2]);
  StoreRgb(
      {ClampedByte(y + 1.402 * cr), ClampedByte(y - 0.3441363 * cb - 0.71413636 * cr), ClampedByte(y + 1.772 * cb)},
      dst, args);
}

Status RGBToYCbCrRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
#if QV_HAS_VECTORS
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    const MatrixVectors<YCbCrOfRgb> matrix;
    return BlockRow<RGBToYCbCrPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const WordPlanes ycc = matrix.OfBlock(PixelPairs<kSwapped>(from));
      StoreWords({ycc.first, LowBytes(ycc.middle), LowBytes(ycc.last)}, to);
    });
  });
#else
  return ScalarRow<RGBToYCbCrPixel, 3, 3>(src, dst, width, args);
#endif
}

#if QV_HAS_VECTORS
struct YCbCrSamples {
  static constexpr int kScaleBits = 0;
  HWY_INLINE I16Vector Chromas(I16Vector bytes) const { return hn::ShiftRight<8>(hn::ShiftLeft<8>(bytes)); }
  HWY_INLINE I16Vector Luma(I16Vector bytes) const { return bytes; }
};

Status YCbCrToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return LumaChromaRow<YCbCrToRGBPixel, RgbOfYCbCr, YCbCrSamples>(src, dst, width, args);
}
#else
constexpr auto& YCbCrToRGBRow = ScalarRow<YCbCrToRGBPixel, 3, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToYCbCr, 3, 3)
QV_PIXEL_KERNEL(YCbCrToRGB, 3, 3)
}  // namespace qv
#endif
