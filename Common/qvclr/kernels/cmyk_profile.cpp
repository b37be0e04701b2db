// CS_CMYK_PROFILE by formula: CMYK whose C, M and Y are carried as the YCbCr of their complements. RowArgs::record is
// the converter's YCbCrTables, null for the shared ones. The vectors work out what the tables hold.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#include "qvclr/ycbcr_tables.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/cmyk_profile.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/inks-inl.h"
#include "qvclr/kernels/matrix-inl.h"
#include "qvclr/kernels/words-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

inline const YCbCrTables& TablesOf(const RowArgs& args) {
  return args.record ? *static_cast<const YCbCrTables*>(args.record) : SharedYCbCrTables();
}

inline Rgb RgbFromYCbCr(const uint8_t* ycc, const YCbCrTables& tables) {
  const uint8_t y = ycc[0], cb = ycc[1], cr = ycc[2];
  const uint8_t* limited = tables.limit.at_zero + y;
  return {limited[tables.cr_to_r[cr]], limited[(tables.cb_to_g[cb] + tables.cr_to_g[cr]) >> 16],
          limited[tables.cb_to_b[cb]]};
}

inline void YCbCrFromRgb(const Rgb& rgb, const YCbCrTables& tables, uint8_t* ycc) {
  const auto r = static_cast<uint8_t>(rgb.r), g = static_cast<uint8_t>(rgb.g), b = static_cast<uint8_t>(rgb.b);
  ycc[0] = static_cast<uint8_t>((tables.r_to_y[r] + tables.g_to_y[g] + tables.b_to_y[b]) >> 16);
  ycc[1] = static_cast<uint8_t>((tables.r_to_cb[r] + tables.g_to_cb[g] + tables.b_to_cb[b]) >> 16);
  ycc[2] = static_cast<uint8_t>((tables.b_to_cb[r] + tables.g_to_cr[g] + tables.b_to_cr[b]) >> 16);
}

// a x b / c to the nearest whole number, of values that are not negative.
constexpr int Share(int a, int b, int c) { return (a * b + c / 2) / c; }

inline void CMYKProfileToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb complements = RgbFromYCbCr(src, TablesOf(args));
  const int k = src[3];
  const auto channel = [&](int complement) {
    const int ink = 255 - complement;
    return 255 - (ink - Share(ink, k, 255) + k);
  };
  StoreRgb({channel(complements.r), channel(complements.g), channel(complements.b)}, dst, args);
}

inline void RGBToCMYKProfilePixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  const int light = std::max({r, g, b});
  const auto complement = [&](int channel) { return light == 0 ? 255 : 255 - Share(light - channel, 255, light); };
  YCbCrFromRgb({complement(r), complement(g), complement(b)}, TablesOf(args), dst);
  dst[3] = static_cast<uint8_t>(255 - light);
}

inline void CmykFromProfilePixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = RgbFromYCbCr(src, TablesOf(args));
  dst[3] = src[3];
  dst[0] = static_cast<uint8_t>(255 - r);
  dst[1] = static_cast<uint8_t>(255 - g);
  dst[2] = static_cast<uint8_t>(255 - b);
}

inline void ProfilePixelFromCmyk(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  dst[3] = src[3];
  YCbCrFromRgb({255 - src[0], 255 - src[1], 255 - src[2]}, TablesOf(args), dst);
}

#if QV_HAS_VECTORS
// The YCbCr of the complements of C and Y, M in both places.
struct YCbCrOfInks {
  static constexpr forms::Form kFirst = {{-19595, -7471, -19235, -19235}, 255 * 65536 + 32768, 16},
                               kMiddle = {{11059, -32768, 21709, 0}, 0x807FFF, 16},
                               kLast = {{-32768, 5329, 27439, 0}, 0x807FFF, 16};
};

// What Cr and Cb add to luma for the complement of M.
constexpr forms::Form kGreen = {{-23401, -11277, 0, 0}, 16384, 15};
static_assert(!FormVectors<kGreen>::kInHighWords);

HWY_INLINE ByteVector BytesOf(const WordPlane& words) {
  return BytesOf(Words{hn::BitCast(U16(), words.lower), hn::BitCast(U16(), words.upper)});
}

struct InkPairs {
  const Words &c, &m, &y;
  template <size_t kQuarter>
  HWY_INLINE Pairs At(blocks::Quarter<kQuarter>) const {
    return {PairsOfWords<kQuarter>(c, y), PairsOfWords<kQuarter>(m, m)};
  }
};

// Made before the loop of a row.
class InkCoder {
 public:
  HWY_INLINE InkCoder() {}
  HWY_INLINE InkPlanes operator()(const Words& c, const Words& m, const Words& y, ByteVector k) const {
    const WordPlanes ycc = matrix_.OfBlock(InkPairs{c, m, y});
    return {BytesOf(ycc.first), BytesOf(ycc.middle), BytesOf(ycc.last), k};
  }

 private:
  MatrixVectors<YCbCrOfInks> matrix_;
};

// Made before the loop of a row.
class ComplementsOfYCbCr {
 public:
  HWY_INLINE ComplementsOfYCbCr() {}
  HWY_INLINE RgbPlanes operator()(const InkPlanes& coded) const {
    const Words luma = WordsOf(coded.c), of_cb = FromMiddle(coded.m), of_cr = FromMiddle(coded.y);
    const Words green = {Green<0>(of_cb, of_cr), Green<2>(of_cb, of_cr)};
    const auto red = [](WordVector v) HWY_ATTR { return hn::Add(v, Rounded(v, 13172)); };  // 91881 v / 65536
    const auto blue = [](WordVector v) HWY_ATTR { return hn::Add(hn::Add(v, v), Rounded(v, -7471)); };  // 116130
    const auto add = [](WordVector a, WordVector b) HWY_ATTR { return hn::Add(a, b); };
    return {BytesOf(ForWords(add, luma, ForWords(red, of_cr))), BytesOf(ForWords(add, luma, green)),
            BytesOf(ForWords(add, luma, ForWords(blue, of_cb)))};
  }

 private:
  static HWY_INLINE Words FromMiddle(ByteVector bytes) {
    const auto middle = hn::Set(U16(), uint16_t{128});
    return ForWords([&](WordVector words) HWY_ATTR { return hn::Sub(words, middle); }, WordsOf(bytes));
  }
  // 32768ths of signed words.
  static HWY_INLINE WordVector Rounded(WordVector words, int16_t factor) {
    return hn::BitCast(U16(), hn::MulFixedPoint15(hn::BitCast(I16(), words), hn::Set(I16(), factor)));
  }
  template <size_t kQuarter>
  HWY_INLINE WordVector Green(const Words& cb, const Words& cr) const {
    const auto of = [&](I16Vector pairs) HWY_ATTR { return green_.Whole(green_.Sum(Pairs{pairs, hn::Zero(I16())})); };
    return hn::BitCast(U16(), Narrow(of(PairsOfWords<kQuarter>(cr, cb)), of(PairsOfWords<kQuarter + 1>(cr, cb))));
  }
  FormVectors<kGreen> green_;
};

// What is left of the complements under black; equal to covering their inks.
HWY_INLINE ByteVector UnderBlack(ByteVector complement, const Words& not_black) {
  const auto half = hn::Set(U16(), uint16_t{127});
  return BytesOf(ForWords([&](WordVector c, WordVector rest)
                              HWY_ATTR { return Over255(hn::Add(hn::Mul(c, rest), half)); },
                          WordsOf(complement), not_black));
}

Status CMYKProfileToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr RowArgs kOrder{.rgb_first = !decltype(swapped)::value};
    const ComplementsOfYCbCr complements;
    return BlockRow<CMYKProfileToRGBPixel, 4, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const InkPlanes coded = LoadInks(from);
      const RgbPlanes rgb = complements(coded);
      const Words not_black = WordsOf(hn::Not(coded.k));
      StoreRgbPlanes<blocks::InkOrders>(
          {UnderBlack(rgb.r, not_black), UnderBlack(rgb.g, not_black), UnderBlack(rgb.b, not_black)}, to, kOrder);
    });
  });
}

// 255 x missing / light to the nearest whole number.
class InksOfLight {
 public:
  explicit HWY_INLINE InksOfLight(ByteVector light)
      : light_(light),
        by_light_(NotZero(light)),
        half_(ForWords([](WordVector words) HWY_ATTR { return hn::ShiftRight<1>(words); }, WordsOf(light))) {}
  HWY_INLINE Words operator()(ByteVector channel) const {
    const auto numerator = [](WordVector missing, WordVector half)
                               HWY_ATTR { return hn::Add(hn::Sub(hn::ShiftLeft<8>(missing), missing), half); };
    return by_light_.Into(ForWords(numerator, WordsOf(hn::Sub(light_, channel)), half_));
  }

 private:
  ByteVector light_;
  Divisors by_light_;
  Words half_;
};

Status RGBToCMYKProfileRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr RowArgs kOrder{.rgb_first = !decltype(swapped)::value};
    const InkCoder coder;
    return BlockRow<RGBToCMYKProfilePixel, 3, 4>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      const RgbPlanes rgb = LoadRgbPlanes<blocks::InkOrders>(from, kOrder);
      const ByteVector light = hn::Max(rgb.r, hn::Max(rgb.g, rgb.b));
      const InksOfLight ink(light);
      StoreInks(coder(ink(rgb.r), ink(rgb.g), ink(rgb.b), hn::Not(light)), to);
    });
  });
}

Status CmykFromProfileRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const ComplementsOfYCbCr complements;
  return BlockRow<CmykFromProfilePixel, 4, 4>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
    const InkPlanes coded = LoadInks(from);
    const RgbPlanes rgb = complements(coded);
    StoreInks({hn::Not(rgb.r), hn::Not(rgb.g), hn::Not(rgb.b), coded.k}, to);
  });
}

Status ProfileFromCmykRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const InkCoder coder;
  return BlockRow<ProfilePixelFromCmyk, 4, 4>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
    const InkPlanes inks = LoadInks(from);
    StoreInks(coder(WordsOf(inks.c), WordsOf(inks.m), WordsOf(inks.y), inks.k), to);
  });
}
#else
constexpr auto& CMYKProfileToRGBRow = ScalarRow<CMYKProfileToRGBPixel, 4, 3>;
constexpr auto& RGBToCMYKProfileRow = ScalarRow<RGBToCMYKProfilePixel, 3, 4>;
constexpr auto& CmykFromProfileRow = ScalarRow<CmykFromProfilePixel, 4, 4>;
constexpr auto& ProfileFromCmykRow = ScalarRow<ProfilePixelFromCmyk, 4, 4>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(CmykFromProfileRow)
QV_ROW_OF_THIS_CPU(ProfileFromCmykRow)
}  // namespace

const YCbCrTables& SharedYCbCrTables() {
  static constinit YCbCrTables tables{};
  static const bool built = (BuildYCbCrTables(tables), true);
  static_cast<void>(built);
  return tables;
}

// No pixel is refused.
void CmykFromProfilePixels(const uint8_t* src, uint8_t* cmyk, size_t pixels, const YCbCrTables& tables) {
  static_cast<void>(CmykFromProfileRowOfThisCpu(src, cmyk, pixels, {.record = &tables}));
}
void ProfilePixelsFromCmyk(const uint8_t* cmyk, uint8_t* dst, size_t pixels, const YCbCrTables& tables) {
  static_cast<void>(ProfileFromCmykRowOfThisCpu(cmyk, dst, pixels, {.record = &tables}));
}

QV_PIXEL_KERNEL(CMYKProfileToRGB, 4, 3)
QV_PIXEL_KERNEL(RGBToCMYKProfile, 3, 4)
}  // namespace qv
#endif
