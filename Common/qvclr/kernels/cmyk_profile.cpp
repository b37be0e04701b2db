// CS_CMYK_PROFILE by formula: CMYK whose C, M and Y are carried as the YCbCr of their complements. RowArgs::record is
// the converter's YCbCrTables, null for the shared ones.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"
#include "qvclr/ycbcr_tables.h"

namespace qv {

const YCbCrTables& SharedYCbCrTables() {
  static constinit YCbCrTables tables{};
  static const bool built = (BuildYCbCrTables(tables), true);
  static_cast<void>(built);
  return tables;
}

namespace {

const YCbCrTables& TablesOf(const RowArgs& args) {
  return args.record ? *static_cast<const YCbCrTables*>(args.record) : SharedYCbCrTables();
}

Rgb RgbFromYCbCr(const uint8_t* ycc, const YCbCrTables& tables) {
  const uint8_t y = ycc[0], cb = ycc[1], cr = ycc[2];
  const uint8_t* limited = tables.limit.at_zero + y;
  return {limited[tables.cr_to_r[cr]], limited[(tables.cb_to_g[cb] + tables.cr_to_g[cr]) >> 16],
          limited[tables.cb_to_b[cb]]};
}

void YCbCrFromRgb(const Rgb& rgb, const YCbCrTables& tables, uint8_t* ycc) {
  const auto r = static_cast<uint8_t>(rgb.r), g = static_cast<uint8_t>(rgb.g), b = static_cast<uint8_t>(rgb.b);
  ycc[0] = static_cast<uint8_t>((tables.r_to_y[r] + tables.g_to_y[g] + tables.b_to_y[b]) >> 16);
  ycc[1] = static_cast<uint8_t>((tables.r_to_cb[r] + tables.g_to_cb[g] + tables.b_to_cb[b]) >> 16);
  ycc[2] = static_cast<uint8_t>((tables.b_to_cb[r] + tables.g_to_cr[g] + tables.b_to_cr[b]) >> 16);
}

// a x b / c to the nearest whole number, of values that are not negative.
constexpr int Share(int a, int b, int c) { return (a * b + c / 2) / c; }

void CMYKProfileToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb complements = RgbFromYCbCr(src, TablesOf(args));
  const int k = src[3];
  const auto channel = [&](int complement) {
    const int ink = 255 - complement;
    return 255 - (ink - Share(ink, k, 255) + k);
  };
  StoreRgb({channel(complements.r), channel(complements.g), channel(complements.b)}, dst, args);
}

void RGBToCMYKProfilePixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  const int light = std::max({r, g, b});
  const auto complement = [&](int channel) { return light == 0 ? 255 : 255 - Share(light - channel, 255, light); };
  YCbCrFromRgb({complement(r), complement(g), complement(b)}, TablesOf(args), dst);
  dst[3] = static_cast<uint8_t>(255 - light);
}

}  // namespace

void CmykFromProfilePixels(const uint8_t* src, uint8_t* cmyk, size_t pixels, const YCbCrTables& tables) {
  for (; pixels > 0; --pixels, src += 4, cmyk += 4) {
    const auto [r, g, b] = RgbFromYCbCr(src, tables);
    cmyk[0] = static_cast<uint8_t>(255 - r);
    cmyk[1] = static_cast<uint8_t>(255 - g);
    cmyk[2] = static_cast<uint8_t>(255 - b);
    cmyk[3] = src[3];
  }
}

void ProfilePixelsFromCmyk(const uint8_t* cmyk, uint8_t* dst, size_t pixels, const YCbCrTables& tables) {
  for (; pixels > 0; --pixels, cmyk += 4, dst += 4) {
    YCbCrFromRgb({255 - cmyk[0], 255 - cmyk[1], 255 - cmyk[2]}, tables, dst);
    dst[3] = cmyk[3];
  }
}

const Kernel CMYKProfileToRGB = PixelKernel<CMYKProfileToRGBPixel, 4, 3>("CMYKProfileToRGB");
const Kernel RGBToCMYKProfile = PixelKernel<RGBToCMYKProfilePixel, 3, 4>("RGBToCMYKProfile");

}  // namespace qv
