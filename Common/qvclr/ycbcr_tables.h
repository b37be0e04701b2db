// Fixed-point tables of full-range YCbCr (JFIF), 16 fractional bits: what CS_CMYK_PROFILE is coded with. Rows have an
// entry per 8-bit sample.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qv {

// Bytes for indices from -256 upward: below 0 gives 0, above 255 gives 255, and far above wraps round to 0 and on.
struct RangeLimit {
  const uint8_t* at_zero;
  std::array<uint8_t, 1408> bytes;
};

struct YCbCrTables {
  using Row = std::array<uint32_t, 256>;
  using SignedRow = std::array<int32_t, 256>;

  // The rounding half and the offset of chroma lie in b_to_y and in b_to_cb, which serves as r_to_cr too.
  Row r_to_y, g_to_y, b_to_y, r_to_cb, g_to_cb, b_to_cb, g_to_cr, b_to_cr;
  SignedRow cr_to_r, cb_to_b, cr_to_g, cb_to_g;  // the last two unshifted
  RangeLimit limit;
};
static_assert(sizeof(YCbCrTables) == 13704);

constexpr void BuildYCbCrTables(YCbCrTables& tables) {
  for (int i = 0; i < 256; ++i) {
    const auto at = static_cast<size_t>(i);
    const auto x = static_cast<uint32_t>(i);
    tables.r_to_y[at] = 19595 * x;
    tables.g_to_y[at] = 38470 * x;
    tables.b_to_y[at] = 7471 * x + 32768;
    tables.r_to_cb[at] = 0 - 11059 * x;
    tables.g_to_cb[at] = 0 - 21709 * x;
    tables.b_to_cb[at] = 32768 * x + 0x807FFF;
    tables.g_to_cr[at] = 0 - 27439 * x;
    tables.b_to_cr[at] = 0 - 5329 * x;
    const int c = i - 128;
    tables.cr_to_r[at] = (91881 * c + 32768) >> 16;
    tables.cb_to_b[at] = (116130 * c + 32768) >> 16;
    tables.cr_to_g[at] = -46802 * c;
    tables.cb_to_g[at] = -22554 * c + 32768;
  }
  for (size_t i = 0; i < tables.limit.bytes.size(); ++i) {
    const bool identity = (i >= 256 && i < 512) || i >= 1280;
    tables.limit.bytes[i] = static_cast<uint8_t>(identity ? i % 256 : i >= 512 && i < 896 ? 255 : 0);
  }
  tables.limit.at_zero = &tables.limit.bytes[256];
}

// Serves without a converter.
const YCbCrTables& SharedYCbCrTables();

// Pixels of CS_CMYK_PROFILE to packed CMYK, and back.
void CmykFromProfilePixels(const uint8_t* src, uint8_t* cmyk, size_t pixels, const YCbCrTables& tables);
void ProfilePixelsFromCmyk(const uint8_t* cmyk, uint8_t* dst, size_t pixels, const YCbCrTables& tables);

}  // namespace qv
