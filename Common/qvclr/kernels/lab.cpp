// CS_LAB by formula, in vectors of single precision without settings of the converter's own. Of the colours that come
// near to the next byte the pixel functions decide.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/lab_pixel.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/lab.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/lab_record-inl.h"
#include "qvclr/kernels/powers-inl.h"

#ifndef QV_LAB_ONCE
#define QV_LAB_ONCE
namespace qv {
namespace {

struct PlainTables {
  blocks::FloatTable linear;
  std::array<float, 9> to_xyz{}, to_rgb{};             // XYZ relative to the white
  blocks::NearPowers cube_roots{21, 480, 1.0 / 3, 1};  // from 2^-7 on
  blocks::NearPowers bytes{23, 106, 0.45, 255};        // from 2^-21 on
};
const PlainTables& Plain() {
  static const PlainTables tables = [] {
    PlainTables made{blocks::FloatTable(lab::PlainFromRgb().linear)};
    const LabConstants &from_rgb = lab::PlainFromRgb().constants, &to_rgb = lab::PlainToRgb();
    for (size_t i = 0; i < 9; ++i) {
      made.to_xyz[i] = static_cast<float>(from_rgb.matrix[i] * 100 / from_rgb.white[i / 3]);
      made.to_rgb[i] = static_cast<float>(to_rgb.matrix[i] * to_rgb.white[i % 3] / 100);
    }
    return made;
  }();
  return tables;
}

}  // namespace
}  // namespace qv
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

#if QV_HAS_VECTORS

HWY_INLINE FloatVector SumOf(const float* factors, FloatVector x, FloatVector y, FloatVector z) {
  const auto factor = [&](size_t i) HWY_ATTR { return hn::Set(F32(), factors[i]); };
  return hn::MulAdd(factor(2), z, hn::MulAdd(factor(1), y, hn::Mul(factor(0), x)));
}

HWY_INLINE FloatVector CurveOf(FloatVector t, const PlainTables& plain) {
  const auto line = hn::MulAdd(t, SetFloat(kSlope), SetFloat(kIntercept));
  return hn::IfThenElse(hn::Gt(t, SetFloat(kLinearBelow)), CubeRoot(t, plain.cube_roots), line);
}

HWY_INLINE void RGBToLabBlock(const uint8_t* src, uint8_t* dst, const PlainTables& plain, const RowArgs& args) {
  constexpr double kWindow = 6e-5;
  const RgbPlanes rgb = LoadRgbPlanes(src, args);
  const Floats r = LookUp(plain.linear, rgb.r), g = LookUp(plain.linear, rgb.g), b = LookUp(plain.linear, rgb.b);
  Ints whole_l, whole_a, whole_b;
  Floats clearance;
  for (size_t i = 0; i < 4; ++i) {
    const auto curve = [&](size_t row) HWY_ATTR {
      return CurveOf(SumOf(&plain.to_xyz[3 * row], r.at[i], g.at[i], b.at[i]), plain);
    };
    const auto fx = curve(0), fy = curve(1), fz = curve(2);
    auto lightness = hn::MulAdd(fy, SetFloat(116), SetFloat(-16));
    // White is a little above 100, and no other colour comes near.
    lightness = hn::Add(lightness, hn::IfThenElseZero(hn::Gt(lightness, SetFloat(99.99)), SetFloat(0.25)));
    const auto to_red = hn::Mul(hn::Sub(fx, fy), SetFloat(500)), to_yellow = hn::Mul(hn::Sub(fy, fz), SetFloat(200));
    whole_l.at[i] = WholeOf(lightness);
    whole_a.at[i] = WholeOf(to_red);
    whole_b.at[i] = WholeOf(to_yellow);
    clearance.at[i] = LeastMagnitude(OffWholeButZero(lightness), OffWholeButZero(to_red), OffWholeButZero(to_yellow));
  }
  const auto percent = [](WordVector words) HWY_ATTR {
    return hn::Add(hn::Add(words, words), TimesOver65536(words, 36045));  // x 255 / 100, rounded down, up to 100
  };
  StoreSettledPlanes<lab::RGBToLabPixel>(
      clearance, kWindow,
      {BytesOf(ForWords(percent, WordsOf(whole_l))), LowBytesOf(WordsOf(whole_a)), LowBytesOf(WordsOf(whole_b))}, src,
      dst, args);
}

HWY_INLINE FloatVector CubeOf(FloatVector f) {
  const auto cube = hn::Mul(f, hn::Mul(f, f));
  const auto line = hn::Mul(hn::Sub(f, SetFloat(kIntercept)), SetFloat(1 / kSlope));
  return hn::IfThenElse(hn::Gt(cube, SetFloat(kLinearBelow)), cube, line);
}

// Twice the middle of what is truncated to a signed byte.
HWY_INLINE Floats TwiceMiddle(ByteVector bytes) {
  const Words shifted = WordsOf(hn::Zero(U8()), bytes);
  const auto middle = [](WordVector word) HWY_ATTR {
    const auto twice = hn::ShiftRight<7>(hn::BitCast(I16(), word));
    const auto side = hn::Min(hn::Max(twice, hn::Set(I16(), int16_t{-1})), hn::Set(I16(), int16_t{1}));
    return hn::BitCast(U16(), hn::Add(twice, side));
  };
  const Words middles = ForWords(middle, shifted);
  const auto zero = hn::Zero(U16());
  const auto lower = [&](WordVector word) HWY_ATTR {
    return FloatOf(hn::ShiftRight<16>(hn::BitCast(I32(), hn::InterleaveLower(U16(), zero, word))));
  };
  const auto upper = [&](WordVector word) HWY_ATTR {
    return FloatOf(hn::ShiftRight<16>(hn::BitCast(I32(), hn::InterleaveUpper(U16(), zero, word))));
  };
  return {{lower(middles.lower), upper(middles.lower), lower(middles.upper), upper(middles.upper)}};
}

HWY_INLINE void LabToRGBBlock(const uint8_t* src, uint8_t* dst, const PlainTables& plain, const RowArgs& args) {
  constexpr double kWindow = 1e-4, kError = 2e-7;
  const auto [l, a, b] = LoadPlanes(src);
  const auto percent = [](WordVector word) HWY_ATTR {
    return Over255(hn::Add(hn::Mul(word, hn::Set(U16(), uint16_t{100})), hn::Set(U16(), uint16_t{254})));
  };
  const ByteVector whole = BytesOf(ForWords(percent, WordsOf(l)));
  const auto an_end = hn::Or(hn::Eq(whole, hn::Zero(U8())), hn::Eq(whole, hn::Set(U8(), uint8_t{100})));
  const ByteVector twice_l = hn::Add(hn::Add(whole, whole), hn::IfThenZeroElse(an_end, hn::Set(U8(), uint8_t{1})));
  const Ints ints_l = IntsOf(WordsOf(twice_l));
  const Floats twice_a = TwiceMiddle(a), twice_b = TwiceMiddle(b);

  Ints red, green, blue;
  Floats clearance;
  HWY_UNROLL(4)
  for (size_t i = 0; i < 4; ++i) {
    const auto fy = hn::MulAdd(FloatOf(ints_l.at[i]), SetFloat(0.5 / 116), SetFloat(16.0 / 116));
    const auto x = CubeOf(hn::MulAdd(twice_a.at[i], SetFloat(0.5 / 500), fy)), y = CubeOf(fy),
               z = CubeOf(hn::MulAdd(twice_b.at[i], SetFloat(-0.5 / 200), fy));
    const auto error = hn::Mul(SetFloat(kError), hn::Add(hn::Add(hn::Abs(x), y), hn::Abs(z)));
    const auto channel = [&](size_t row, IntVector& whole_byte) HWY_ATTR {
      const auto linear = SumOf(&plain.to_rgb[3 * row], x, y, z);
      const auto byte = ByteOfLinear(hn::Min(hn::Max(linear, SetFloat(0x1p-21)), SetFloat(1)), plain.bytes);
      whole_byte = WholeOf(byte);
      // An error of the linear value is one of 0.45 byte / linear as much, at most.
      return hn::Sub(hn::Mul(hn::Sub(hn::Abs(OffWhole(byte)), SetFloat(kWindow)), hn::Abs(linear)),
                     hn::Mul(byte, error));
    };
    const auto of_red = channel(0, red.at[i]), of_green = channel(1, green.at[i]), of_blue = channel(2, blue.at[i]);
    clearance.at[i] = hn::Min(of_red, hn::Min(of_green, of_blue));
  }
  const RgbPlanes rgb = {BytesOf(WordsOf(red)), BytesOf(WordsOf(green)), BytesOf(WordsOf(blue))};
  StoreSettledPlanes<lab::LabToRGBPixel>(clearance, 0, InByteOrder(rgb, args), src, dst, args);
}

Status RGBToLabRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  if (const auto* record = static_cast<const RgbToLabRecord*>(args.record)) {
    return BlockRow<lab::RGBToLabPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const RgbPlanes rgb = LoadRgbPlanes(from, args);
      const auto lab = [&](const IntTriple& pixels) HWY_ATTR { return LabOfRgb(pixels, *record); };
      StorePlanes(ByTriples({rgb.r, rgb.g, rgb.b}, lab), to);
    });
  }
  const PlainTables& plain = Plain();
  return BlockRow<lab::RGBToLabPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { RGBToLabBlock(from, to, plain, args); });
}
Status LabToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  if (const auto* record = static_cast<const LabToRgbRecord*>(args.record)) {
    return BlockRow<lab::LabToRGBPixel, 3, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const auto rgb = [&](const IntTriple& pixels) HWY_ATTR { return RgbOfLab(pixels, *record); };
      const Planes planes = ByTriples(LoadPlanes(from), rgb);
      StoreRgbPlanes({planes.first, planes.middle, planes.last}, to, args);
    });
  }
  const PlainTables& plain = Plain();
  return BlockRow<lab::LabToRGBPixel, 3, 3>(
      src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR { LabToRGBBlock(from, to, plain, args); });
}
#else
constexpr auto& RGBToLabRow = ScalarRow<lab::RGBToLabPixel, 3, 3>;
constexpr auto& LabToRGBRow = ScalarRow<lab::LabToRGBPixel, 3, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
QV_PIXEL_KERNEL(RGBToLab, 3, 3)
QV_PIXEL_KERNEL(LabToRGB, 3, 3)
}  // namespace qv
#endif
