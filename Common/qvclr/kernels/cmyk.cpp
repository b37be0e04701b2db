// CS_CMYK by formula: complements with a tunable black generation. The exponents differ on purpose: 5 (and 2 for the
// spread of the inks) on the way to CMYK, 4 on the way back. At the standard parameter, 175, black takes nothing from
// the inks, K is 17.5 % of the smallest one, and the way back ignores it: intended, a round trip changes no pixel.
#include <algorithm>
#include <array>

#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

// Weight of black by the spread of the inks, in 256ths: entry 255 belongs to a neutral pixel.
constexpr auto kGrayWeightTable = [] {
  std::array<uint16_t, 256> table{};
  for (int i = 0; i < 256; ++i) table[static_cast<size_t>(i)] = static_cast<uint16_t>((i / 255.0) * (i / 255.0) * 256);
  return table;
}();

void PrepareBlack(RowArgs& args) {
  const double base = args.black_param / 1000.0;
  args.black = {base, Power(base, 5), static_cast<int16_t>(TruncateToInt32(Power(base, 4) * 256))};
}

void RGBToCMYKPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
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
  dst[3] = static_cast<uint8_t>(TruncateToInt32(smallest * args.black.base));
}

void CMYKToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const int c = src[0], m = src[1], y = src[2];
  const auto [smallest, largest] = std::minmax({c, m, y});
  const auto neutrality = static_cast<uint8_t>(smallest - largest + 255);
  const int weight = kGrayWeightTable[neutrality];
  const int black = std::min(((src[3] * weight) >> 8) * args.black.grey_factor, 255 - largest);
  StoreRgb({255 - c - black, 255 - m - black, 255 - y - black}, dst, args);
}

}  // namespace

const Kernel RGBToCMYK = PixelKernel<RGBToCMYKPixel, 3, 4>("RGBToCMYK", PrepareBlack);
const Kernel CMYKToRGB = PixelKernel<CMYKToRGBPixel, 4, 3>("CMYKToRGB", PrepareBlack);

}  // namespace qv
