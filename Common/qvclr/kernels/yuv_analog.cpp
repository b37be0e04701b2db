// CS_YUV: analog-television YUV; chroma rescaled from its span and offset to 0..255. A converter with settings of its
// own (RowArgs::record, YuvSettings) replaces the spans and offsets and stores luma through its table.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#include "qvclr/yuv_settings.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/yuv_analog.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/matrix-inl.h"
#include "qvclr/kernels/words-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

constexpr YuvSettings kPlain;

// Rows in reals, before the spans and offsets of chroma.
template <typename Real>
HWY_INLINE Real Luma(Real r, Real g, Real b) {
  return 0.299 * r + 0.587 * g + 0.114 * b;
}
template <typename Real>
HWY_INLINE Real StoredU(Real r, Real g, Real b, const YuvSettings& settings) {
  return (-0.146 * r - 0.288 * g + 0.434 * b + static_cast<double>(settings.u_offset)) / settings.u_span * 255 + 0.5;
}
template <typename Real>
HWY_INLINE Real StoredV(Real r, Real g, Real b, const YuvSettings& settings) {
  return (0.617 * r - 0.517 * g - 0.1 * b + static_cast<double>(settings.v_offset)) / settings.v_span * 255 + 0.5;
}
template <typename Real>
HWY_INLINE Real LumaIndex(Real r, Real g, Real b, const YuvSettings& settings) {
  const Real luma = Luma(r, g, b);
  return settings.luma_span == 255 ? luma : luma * 255 / static_cast<double>(settings.luma_span) + 0.5;
}

inline void RGBToYUVPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb rgb = LoadRgb(src, args);
  const double r = rgb.r, g = rgb.g, b = rgb.b;
  const YuvSettings& settings = args.record ? *static_cast<const YuvSettings*>(args.record) : kPlain;
  const uint8_t index = ClampedByte(LumaIndex(r, g, b, settings));
  dst[0] = settings.stored_luma ? settings.stored_luma[index] : index;
  dst[1] = ClampedByte(StoredU(r, g, b, settings));
  dst[2] = ClampedByte(StoredV(r, g, b, settings));
}

// The two small cross terms, -29 and -33, belong to the inverse. The shifts round toward minus infinity. 64 bits hold
// whatever spans and offsets a record names.
inline void YUVToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const YuvSettings& settings = args.record ? *static_cast<const YuvSettings*>(args.record) : kPlain;
  const uint8_t index = settings.stored_luma ? settings.index_of_stored[src[0]] : src[0];
  const int64_t y = index * settings.luma_span / 255;
  const int64_t u = static_cast<int64_t>(src[1] / 255.0 * settings.u_span) - settings.u_offset;
  const int64_t v = static_cast<int64_t>(src[2] / 255.0 * settings.v_span) - settings.v_offset;
  const auto channel = [&](int64_t of_u, int64_t of_v) {
    return static_cast<int>(std::clamp<int64_t>(y + ((of_v * v + of_u * u) >> 15), 0, 255));
  };
  StoreRgb({channel(-29, 37221), channel(-12943, -18940), channel(66883, -33)}, dst, args);
}

// By the plain settings.
struct YuvOfRgb {
  static constexpr double kU = 255.0 / 223, kV = 255.0 / 275;
  [[maybe_unused]] static constexpr forms::Form kFirst = forms::OfBytes(0.299, 0.587, 0.114, 0),
                                                kMiddle = forms::OfBytes(-0.146 * kU, -0.288 * kU, 0.434 * kU,
                                                                         112 * kU + 0.5),
                                                kLast =
                                                    forms::OfBytes(0.617 * kV, -0.517 * kV, -0.1 * kV, 138 * kV + 0.5);
  template <typename Real>
  static HWY_INLINE Real First(Real r, Real g, Real b) {
    return Luma(r, g, b);
  }
  template <typename Real>
  static HWY_INLINE Real Middle(Real r, Real g, Real b) {
    return StoredU(r, g, b, kPlain);
  }
  template <typename Real>
  static HWY_INLINE Real Last(Real r, Real g, Real b) {
    return StoredV(r, g, b, kPlain);
  }
};

// What V and U add to Y once they are freed of their scales.
struct RgbOfYuv {
  [[maybe_unused]] static constexpr forms::Form kFirst = {{37221, -29, 0, 0}, 0, 15},
                                                kMiddle = {{-18940, -12943, 0, 0}, 0, 15},
                                                kLast = {{-33, 66883, 0, 0}, 0, 15};
};

#if QV_HAS_VECTORS
// By any settings, in reals.
class YuvBySettings {
 public:
  explicit HWY_INLINE YuvBySettings(const YuvSettings& settings) : settings_(settings) {}
  HWY_INLINE Three operator()(const Pairs& pairs) const {
    const auto clamped = [](Reals value) HWY_ATTR {
      return Reals{hn::Min(hn::Max(value.of, hn::Zero(F64())), hn::Set(F64(), 255.0))};
    };
    const Three rgb = NumbersOf(pairs);
    return {InReals(rgb, [&](Reals r, Reals g, Reals b) HWY_ATTR { return clamped(LumaIndex(r, g, b, settings_)); }),
            InReals(rgb, [&](Reals r, Reals g, Reals b) HWY_ATTR { return clamped(StoredU(r, g, b, settings_)); }),
            InReals(rgb, [&](Reals r, Reals g, Reals b) HWY_ATTR { return clamped(StoredV(r, g, b, settings_)); })};
  }
  HWY_INLINE void StoreLuma(uint8_t* pixels) const {
    if (!settings_.stored_luma) return;
    for (size_t i = 0; i < kBlock; ++i) pixels[3 * i] = settings_.stored_luma[pixels[3 * i]];
  }

 private:
  const YuvSettings settings_;
};

Status RGBToYUVRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  if (!args.record) return MatrixRow<RGBToYUVPixel, YuvOfRgb, true>(src, dst, width, args);
  const YuvBySettings yuv(*static_cast<const YuvSettings*>(args.record));
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    return BlockRow<RGBToYUVPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const PixelPairs<kSwapped> rgb(from);
      StoreWords(ByQuarters([&](auto quarter) HWY_ATTR { return yuv(rgb.At(quarter)); }), to);
      yuv.StoreLuma(to);
    });
  });
}

// 223 b / 255, and b + 20 b / 255 for 275 b / 255, the factors rounded up, so that whole numbers keep their floors.
class PlainYuvSamples {
 public:
  static constexpr int kScaleBits = 0;
  HWY_INLINE PlainYuvSamples()
      : factors_(EveryPair(5141, 57312)), only_v_(EveryPair(-1, 0)), offsets_(EveryPair(138, 112)) {}
  HWY_INLINE I16Vector Chromas(I16Vector bytes) const {
    const hn::Repartition<uint16_t, U8> d;
    const auto product = hn::MulHigh(hn::BitCast(d, bytes), hn::BitCast(d, factors_));
    return hn::Sub(hn::Add(hn::BitCast(I16(), product), hn::And(bytes, only_v_)), offsets_);
  }
  HWY_INLINE I16Vector Luma(I16Vector bytes) const { return bytes; }

 private:
  I16Vector factors_, only_v_, offsets_;
};

// By other settings, in reals.
class YuvSamplesBySettings {
 public:
  static constexpr int kScaleBits = 0;
  explicit HWY_INLINE YuvSamplesBySettings(const YuvSettings& settings)
      : settings_(settings), offsets_(EveryPair(settings.v_offset, settings.u_offset)) {}
  // Sums of such samples stay within words.
  static bool AreWords(const YuvSettings& settings) {
    return std::max(settings.u_span, settings.v_span) <= 2047 &&
           std::max({settings.u_offset, settings.v_offset, settings.luma_span}) <= 2047;
  }
  HWY_INLINE I16Vector Chromas(I16Vector bytes) const {
    const Three of = NumbersOf({bytes, bytes});
    return hn::Sub(
        PairsOfInts(InReals(of, [&](Reals v, Reals, Reals) HWY_ATTR { return v / 255.0 * settings_.v_span; }),
                    InReals(of, [&](Reals, Reals u, Reals) HWY_ATTR { return u / 255.0 * settings_.u_span; })),
        offsets_);
  }
  HWY_INLINE I16Vector Luma(I16Vector bytes) const {
    if (settings_.stored_luma) {
      const ByteVector indices = LookUp(settings_.index_of_stored, hn::BitCast(U8(), bytes));
      bytes = hn::And(hn::BitCast(I16(), indices), hn::Set(I16(), 0xFF));
    }
    const auto span = static_cast<double>(settings_.luma_span);
    const Three of = NumbersOf({bytes, bytes});
    return PairsOfInts(InReals(of, [&](Reals even, Reals, Reals) HWY_ATTR { return even * span / 255.0; }),
                       InReals(of, [&](Reals, Reals odd, Reals) HWY_ATTR { return odd * span / 255.0; }));
  }

 private:
  static HWY_INLINE I16Vector PairsOfInts(IntVector first, IntVector second) {
    return hn::BitCast(I16(), hn::Or(hn::And(first, hn::Set(I32(), 0xFFFF)), hn::ShiftLeft<16>(second)));
  }
  const YuvSettings settings_;
  I16Vector offsets_;
};

Status YUVToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  if (!args.record) return LumaChromaRow<YUVToRGBPixel, RgbOfYuv, PlainYuvSamples>(src, dst, width, args);
  const auto& settings = *static_cast<const YuvSettings*>(args.record);
  if (!YuvSamplesBySettings::AreWords(settings)) return ScalarRow<YUVToRGBPixel, 3, 3>(src, dst, width, args);
  return LumaChromaRow<YUVToRGBPixel, RgbOfYuv, YuvSamplesBySettings>(src, dst, width, args, settings);
}
#else
constexpr auto& RGBToYUVRow = ScalarRow<RGBToYUVPixel, 3, 3>;
constexpr auto& YUVToRGBRow = ScalarRow<YUVToRGBPixel, 3, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToYUV, 3, 3)
QV_PIXEL_KERNEL(YUVToRGB, 3, 3)
}  // namespace qv
#endif
