// CS_YVU9: planes of Y, V and U; one V and one U sample to a block of 4 x 4 pixels.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/studio.h"

namespace qv {
namespace {

// The chroma samples of the band at args.row, found from its first row in the Y plane.
template <typename Byte>
struct ChromaRows {
  Byte *v, *u;
  ChromaRows(Byte* y_row, size_t width, const RowArgs& args) {
    Byte* const v_plane = y_row + (args.height - args.row) * width;
    v = v_plane + args.row / 4 * (width / 4);
    u = v + args.height * width / 16;
  }
};

Status YVU9ToRGBBand(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const ChromaRows<const uint8_t> chroma(src, width, args);
  for (size_t row = 0; row < 4; ++row, src += width, dst += args.rgb_stride) {
    for (size_t x = 0; x < width; ++x) {
      StoreRgb(RgbFromStudio({src[x], chroma.u[x / 4], chroma.v[x / 4]}), dst + 3 * x, args);
    }
  }
  return kSuccess;
}

// A chroma sample begins as the mean of its block's first row; each later row is blended into it as four fifths. That
// weights later rows more than a mean of the block would: intended.
Status RGBToYVU9Band(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const ChromaRows<uint8_t> chroma(dst, width, args);
  for (size_t row = 0; row < 4; ++row, src += args.rgb_stride, dst += width) {
    for (size_t block = 0; block < width / 4; ++block) {
      int u = 0, v = 0;
      for (size_t x = 4 * block; x < 4 * block + 4; ++x) {
        const Studio yuv = StudioFromRgb(LoadRgb(src + 3 * x, args));
        dst[x] = yuv.y;
        u += yuv.u;
        v += yuv.v;
      }
      chroma.v[block] = static_cast<uint8_t>(row == 0 ? v / 4 : (chroma.v[block] + v) / 5);
      chroma.u[block] = static_cast<uint8_t>(row == 0 ? u / 4 : (chroma.u[block] + u) / 5);
    }
  }
  return kSuccess;
}

}  // namespace

const Kernel YVU9ToRGB = {
    .name = "YVU9ToRGB", .row = YVU9ToRGBBand, .src_bytes = 4, .dst_bytes = 12, .unit_pixels = 4, .band_rows = 4};
const Kernel RGBToYVU9 = {
    .name = "RGBToYVU9", .row = RGBToYVU9Band, .src_bytes = 12, .dst_bytes = 4, .unit_pixels = 4, .band_rows = 4};

}  // namespace qv
