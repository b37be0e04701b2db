// CS_YIQ: NTSC's YIQ (1953), each component rescaled from its span to 0..255. The luma span of 263 is kept on purpose:
// white is stored with Y = 247.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/yiq.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/matrix-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

struct YiqOfRgb {
  static constexpr double kY = 255.0 / 263, kI = 255.0 / 303, kQ = 255.0 / 267;
  [[maybe_unused]] static constexpr forms::Form kFirst = forms::OfBytes(0.299 * kY, 0.587 * kY, 0.114 * kY, 0.5),
                                                kMiddle = forms::OfBytes(0.596 * kI, -0.274 * kI, -0.322 * kI,
                                                                         152 * kI + 0.5),
                                                kLast =
                                                    forms::OfBytes(0.212 * kQ, -0.523 * kQ, 0.311 * kQ, 134 * kQ + 0.5);
  template <typename Real>
  static HWY_INLINE Real First(Real r, Real g, Real b) {
    return (0.299 * r + 0.587 * g + 0.114 * b) / 263 * 255 + 0.5;
  }
  template <typename Real>
  static HWY_INLINE Real Middle(Real r, Real g, Real b) {
    return (0.596 * r - 0.274 * g - 0.322 * b + 152) / 303 * 255 + 0.5;
  }
  template <typename Real>
  static HWY_INLINE Real Last(Real r, Real g, Real b) {
    return (0.212 * r - 0.523 * g + 0.311 * b + 134) / 267 * 255 + 0.5;
  }
};

// Of Q, I and Y once they are freed of their scales. The forms leave out Y, which is added as it is. Of 201 pairs (Q,
// I) with a whole sum, 46 are rounded below it by some Y; the lean takes 47 of the others out of doubt.
struct RgbOfYiq {
  static constexpr int kScaleBits = 2;
  [[maybe_unused]] static constexpr forms::Form kFirst =
                                                    forms::OfWords<kScaleBits>(0.621, 0.956, 0.171875, 0.015625, 24.95),
                                                kMiddle = forms::OfWords<kScaleBits>(-0.647, -0.272, -0.1171875,
                                                                                     -0.0625, 23.12),
                                                kLast = forms::OfWords<kScaleBits>(1.702, -1.105, 0.1015625, -0.078125,
                                                                                   21.44);
  [[maybe_unused]] static constexpr bool kExactWhereFirstPairIsZero = true;
  template <typename Real>
  static HWY_INLINE Real First(Real q, Real i, Real y) {
    return y + 0.956 * i + 0.621 * q;
  }
  template <typename Real>
  static HWY_INLINE Real Middle(Real q, Real i, Real y) {
    return y - 0.272 * i - 0.647 * q;
  }
  template <typename Real>
  static HWY_INLINE Real Last(Real q, Real i, Real y) {
    return y - 1.105 * i + 1.702 * q;
  }
};

inline void RGBToYIQPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb rgb = LoadRgb(src, args);
  const double r = rgb.r, g = rgb.g, b = rgb.b;
  dst[0] = ClampedByte(YiqOfRgb::First(r, g, b));
  dst[1] = ClampedByte(YiqOfRgb::Middle(r, g, b));
  dst[2] = ClampedByte(YiqOfRgb::Last(r, g, b));
}

inline void YIQToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const double y = TruncateToInt32(src[0] / 255.0 * 263);
  const double i = TruncateToInt32(src[1] / 255.0 * 303 - 152);
  const double q = TruncateToInt32(src[2] / 255.0 * 267 - 134);
  StoreRgb({ClampedByte(RgbOfYiq::First(q, i, y)), ClampedByte(RgbOfYiq::Middle(q, i, y)),
            ClampedByte(RgbOfYiq::Last(q, i, y))},
           dst, args);
}

Status RGBToYIQRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return MatrixRow<RGBToYIQPixel, YiqOfRgb, true>(src, dst, width, args);
}

#if QV_HAS_VECTORS
// With h = 2 b - 255: 303 b / 255 - 152 = 303 h / 510 - 1 / 2, and 267 b / 255 - 134 likewise. Truncated, it is one
// below the rounded product for h above zero, and that product else. The factors are rounded up, so that whole numbers
// keep their floors.
class YiqSamples {
 public:
  static constexpr int kScaleBits = RgbOfYiq::kScaleBits;
  HWY_INLINE YiqSamples()
      : full_(EveryPair(255, 255)), of_qi_(EveryPair(-17156, -19469)), of_y_(EveryPair(2057, 2057)) {}
  HWY_INLINE I16Vector Chromas(I16Vector bytes) const {
    const I16Vector negative_h = hn::Sub(full_, hn::Add(bytes, bytes));
    return hn::ShiftLeft<kScaleBits>(hn::Add(hn::MulFixedPoint15(negative_h, of_qi_), hn::ShiftRight<15>(negative_h)));
  }
  HWY_INLINE I16Vector Luma(I16Vector bytes) const { return hn::Add(bytes, hn::MulHigh(bytes, of_y_)); }

 private:
  I16Vector full_, of_qi_, of_y_;
};

Status YIQToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return LumaChromaRow<YIQToRGBPixel, RgbOfYiq, YiqSamples>(src, dst, width, args);
}
#else
constexpr auto& YIQToRGBRow = ScalarRow<YIQToRGBPixel, 3, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToYIQ, 3, 3)
QV_PIXEL_KERNEL(YIQToRGB, 3, 3)
}  // namespace qv
#endif
