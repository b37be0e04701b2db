// CS_YVU9: planes of Y, V and U; one V and one U sample to a block of 4 x 4 pixels.
#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/yvu9.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/planar-inl.h"

#ifndef QV_YVU9_ONCE
#define QV_YVU9_ONCE
namespace qv {
namespace {

// The samples of the band at args.row, found from its first row in the Y plane.
template <typename Byte>
struct BandRows {
  Byte *y, *v, *u;
  size_t width;
  BandRows(Byte* y_row, size_t band_width, const RowArgs& args) : y(y_row), width(band_width) {
    Byte* const v_plane = y_row + (args.height - args.row) * width;
    v = v_plane + args.row / 4 * (width / 4);
    u = v + args.height * width / 16;
  }
};

// From pixel `x` on.
Status YVU9ToRGBColumns(const BandRows<const uint8_t>& band, size_t x, uint8_t* dst, const RowArgs& args) {
  for (size_t row = 0; row < 4; ++row) {
    for (size_t at = x; at < band.width; ++at) {
      StoreRgb(RgbFromStudio({band.y[row * band.width + at], band.u[at / 4], band.v[at / 4]}),
               dst + row * args.rgb_stride + 3 * at, args);
    }
  }
  return kSuccess;
}

// A chroma sample begins as the mean of its block's first row; each later row is blended into it as four fifths. That
// weights later rows more than a mean of the block would: intended.
Status RGBToYVU9Columns(const uint8_t* src, const BandRows<uint8_t>& band, size_t x, const RowArgs& args) {
  for (size_t row = 0; row < 4; ++row) {
    for (size_t block = x / 4; block < band.width / 4; ++block) {
      int u = 0, v = 0;
      for (size_t at = 4 * block; at < 4 * block + 4; ++at) {
        const Studio yuv = StudioFromRgb(LoadRgb(src + row * args.rgb_stride + 3 * at, args));
        band.y[row * band.width + at] = yuv.y;
        u += yuv.u;
        v += yuv.v;
      }
      band.v[block] = static_cast<uint8_t>(row == 0 ? v / 4 : (band.v[block] + v) / 5);
      band.u[block] = static_cast<uint8_t>(row == 0 ? u / 4 : (band.u[block] + u) / 5);
    }
  }
  return kSuccess;
}

}  // namespace
}  // namespace qv
#endif

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

Status YVU9ToRGBBand(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const BandRows<const uint8_t> band(src, width, args);
#if QV_HAS_VECTORS
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    const RgbFromStudioVectors matrix;
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
      const ByteVector u = SpreadByFour(band.u + x / 4), v = SpreadByFour(band.v + x / 4);
      for (size_t row = 0; row < 4; ++row) {
        const PlanePairs yuv{hn::LoadU(U8(), band.y + row * width + x), u, v};
        StoreWordsInOrder<kSwapped>(matrix.OfBlock(yuv), dst + row * args.rgb_stride + 3 * x);
      }
    }
    return YVU9ToRGBColumns(band, x, dst, args);
  });
#else
  return YVU9ToRGBColumns(band, 0, dst, args);
#endif
}

Status RGBToYVU9Band(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  const BandRows<uint8_t> band(dst, width, args);
#if QV_HAS_VECTORS
  return InRgbOrder(args, [&](auto swapped) HWY_ATTR {
    constexpr bool kSwapped = decltype(swapped)::value;
    const StudioFromRgbVectors matrix;
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
      const auto row_of_block = [&](size_t row) HWY_ATTR {
        const WordPlanes yuv = matrix.OfBlock(PixelPairs<kSwapped>(src + row * args.rgb_stride + 3 * x));
        StoreBytes(yuv.first, band.y + row * width + x);
        return yuv;
      };
      ChromaOfBlock chroma(row_of_block(0));
      for (size_t row = 1; row < 4; ++row) chroma.Blend(row_of_block(row));
      chroma.Store(band.u + x / 4, band.v + x / 4);
    }
    return RGBToYVU9Columns(src, band, x, args);
  });
#else
  return RGBToYVU9Columns(src, band, 0, args);
#endif
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(YVU9ToRGBBand)
QV_ROW_OF_THIS_CPU(RGBToYVU9Band)
}  // namespace

const Kernel YVU9ToRGB = {.name = "YVU9ToRGB",
                          .row = YVU9ToRGBBandOfThisCpu,
                          .src_bytes = 4,
                          .dst_bytes = 12,
                          .unit_pixels = 4,
                          .band_rows = 4};
const Kernel RGBToYVU9 = {.name = "RGBToYVU9",
                          .row = RGBToYVU9BandOfThisCpu,
                          .src_bytes = 12,
                          .dst_bytes = 4,
                          .unit_pixels = 4,
                          .band_rows = 4};

}  // namespace qv
#endif
