// CS_CMYK by formula: complements with a tunable black generation. The exponents differ on purpose: 5 (and 2 for the
// spread of the inks) on the way to CMYK, 4 on the way back. At the standard parameter, 175, black takes nothing from
// the inks, K is 17.5 % of the smallest one, and the way back ignores it: intended, a round trip changes no pixel.
#include <algorithm>
#include <array>
#include <cmath>

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/cmyk.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/doubles-inl.h"
#include "qvclr/kernels/inks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

// Weight of black by the spread of the inks, in 256ths: entry 255 belongs to a neutral pixel.
constexpr auto kGrayWeightTable = [] {
  std::array<uint16_t, 256> table{};
  for (int i = 0; i < 256; ++i) table[static_cast<size_t>(i)] = static_cast<uint16_t>((i / 255.0) * (i / 255.0) * 256);
  return table;
}();

inline void RGBToCMYKPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  const int c = 255 - r, m = 255 - g, y = 255 - b;
  const int smallest = std::min({c, m, y});
  const int largest = std::max({c, m, y});
  const double amount = (smallest / 255.0) * args.black.fifth_power;
  const double neutrality = (smallest - largest + 255) / 255.0;
  // Unsigned from here on: only the low byte is stored, and an indefinite value must not overflow.
  const auto removed = static_cast<uint32_t>(TruncateToInt32(amount * (neutrality * neutrality) * 255));
  dst[0] = static_cast<uint8_t>(static_cast<uint32_t>(c) - removed);
  dst[1] = static_cast<uint8_t>(static_cast<uint32_t>(m) - removed);
  dst[2] = static_cast<uint8_t>(static_cast<uint32_t>(y) - removed);
  dst[3] = args.black.of_smallest[static_cast<size_t>(smallest)];
}

inline void CMYKToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const int c = src[0], m = src[1], y = src[2];
  const auto [smallest, largest] = std::minmax({c, m, y});
  const auto neutrality = static_cast<uint8_t>(smallest - largest + 255);
  const int weight = kGrayWeightTable[neutrality];
  const int black = std::min(((src[3] * weight) >> 8) * args.black.grey_factor, 255 - largest);
  StoreRgb({255 - c - black, 255 - m - black, 255 - y - black}, dst, args);
}

#if QV_HAS_VECTORS
// What black takes from the inks. Only the low byte counts.
HWY_INLINE FewInts Removed(FewInts smallest, FewInts neutrality, double fifth_power) {
  const DoubleVector full = SetDouble(255);
  const DoubleVector amount = hn::Mul(hn::Div(DoubleOf(smallest), full), SetDouble(fifth_power));
  const DoubleVector share = hn::Div(DoubleOf(neutrality), full);
  const DoubleVector removed = hn::Mul(hn::Mul(amount, hn::Mul(share, share)), full);
  const FewInts whole = WholeOf(hn::IfThenElseZero(hn::Lt(removed, SetDouble(2147483648.0)), removed));
  return hn::And(whole, hn::Set(FewI32(), 255));
}
HWY_INLINE ByteVector Removed(ByteVector smallest, ByteVector neutrality, double fifth_power) {
  const auto of_few = [&](FewInts least, FewInts neutral) HWY_ATTR { return Removed(least, neutral, fifth_power); };
  const auto of_words = [&](WordVector least, WordVector neutral) HWY_ATTR {
    return WordsOfInts(InHalves(of_few, LowerInts(least), LowerInts(neutral)),
                       InHalves(of_few, UpperInts(least), UpperInts(neutral)));
  };
  return BytesOf(ForWords(of_words, WordsOf(smallest), WordsOf(neutrality)));
}

HWY_INLINE ByteVector Neutrality(ByteVector smallest, ByteVector largest) {
  return hn::Not(hn::Sub(largest, smallest));
}

// The pixel function's weight is (neutrality / 255)^2 x 256, rounded down; 33026 is 2^31 / 255^2, just above.
HWY_INLINE ByteVector Black(ByteVector k, ByteVector smallest, ByteVector largest, int32_t grey_factor) {
  // Any factor from 256 on takes all that there is. A negative one gives back, and the low byte is what counts.
  const auto factor = hn::Set(U16(), static_cast<uint16_t>(std::min(grey_factor, 256)));
  const auto no_limit = hn::Set(U16(), static_cast<uint16_t>(grey_factor < 0 ? 0xffff : 0));
  const auto black = [&](WordVector ink, WordVector neutrality, WordVector rest) HWY_ATTR {
    const WordVector weight = hn::ShiftRight<7>(TimesOver65536(hn::Mul(neutrality, neutrality), 33026));
    const WordVector weighted = hn::ShiftRight<8>(hn::Mul(ink, weight));
    return hn::Min(hn::Mul(weighted, factor), hn::Or(rest, no_limit));
  };
  return LowBytesOf(ForWords(black, WordsOf(k), WordsOf(Neutrality(smallest, largest)), WordsOf(hn::Not(largest))));
}

template <bool kFromInks>
HWY_INLINE void RGBToCMYKBlock(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const RgbPlanes rgb = LoadRgbPlanes<blocks::InkOrders>(src, args);
  const ByteVector c = hn::Not(rgb.r), m = hn::Not(rgb.g), y = hn::Not(rgb.b);
  const ByteVector smallest = hn::Min(c, hn::Min(m, y));
  const ByteVector k = LookUp(args.black.of_smallest, smallest);
  if constexpr (kFromInks) {
    const ByteVector largest = hn::Max(c, hn::Max(m, y));
    const ByteVector removed = Removed(smallest, Neutrality(smallest, largest), args.black.fifth_power);
    StoreInks({hn::Sub(c, removed), hn::Sub(m, removed), hn::Sub(y, removed), k}, dst);
  } else {
    StoreInks({c, m, y, k}, dst);
  }
}

template <bool kToInks>
HWY_INLINE void CMYKToRGBBlock(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  auto [c, m, y, k] = LoadInks(src);
  if constexpr (kToInks) {
    const ByteVector smallest = hn::Min(c, hn::Min(m, y)), largest = hn::Max(c, hn::Max(m, y));
    const ByteVector black = Black(k, smallest, largest, args.black.grey_factor);
    c = hn::Add(c, black);
    m = hn::Add(m, black);
    y = hn::Add(y, black);
  }
  StoreRgbPlanes<blocks::InkOrders>({hn::Not(c), hn::Not(m), hn::Not(y)}, dst, args);
}

Status RGBToCMYKRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const auto row = [&](auto from_inks) HWY_ATTR {
    return BlockRow<RGBToCMYKPixel, 3, 4>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      RGBToCMYKBlock<decltype(from_inks)::value>(from, to, args);
    });
  };
  return std::abs(args.black.fifth_power) * 255 < 1 ? row(std::false_type()) : row(std::true_type());
}
Status CMYKToRGBRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const auto row = [&](auto to_inks) HWY_ATTR {
    return BlockRow<CMYKToRGBPixel, 4, 3>(src, dst, width, args, [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
      CMYKToRGBBlock<decltype(to_inks)::value>(from, to, args);
    });
  };
  return args.black.grey_factor == 0 ? row(std::false_type()) : row(std::true_type());
}
#else
constexpr auto& RGBToCMYKRow = ScalarRow<RGBToCMYKPixel, 3, 4>;
constexpr auto& CMYKToRGBRow = ScalarRow<CMYKToRGBPixel, 4, 3>;
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {

void PrepareBlack(RowArgs& args) {
  const double base = args.black_param / 1000.0;
  args.black = {Power(base, 5), static_cast<int16_t>(TruncateToInt32(Power(base, 4) * 256)), {}};
  for (size_t smallest = 0; smallest < 256; ++smallest) {
    args.black.of_smallest[smallest] = LowByte(static_cast<double>(smallest) * base);
  }
}

QV_ROW_OF_THIS_CPU(RGBToCMYKRow)
QV_ROW_OF_THIS_CPU(CMYKToRGBRow)

}  // namespace

const Kernel RGBToCMYK = {
    .name = "RGBToCMYK", .row = RGBToCMYKRowOfThisCpu, .src_bytes = 3, .dst_bytes = 4, .prepare = PrepareBlack};
const Kernel CMYKToRGB = {
    .name = "CMYKToRGB", .row = CMYKToRGBRowOfThisCpu, .src_bytes = 4, .dst_bytes = 3, .prepare = PrepareBlack};

}  // namespace qv
#endif
