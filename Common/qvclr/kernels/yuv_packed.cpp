// The packed video layouts CS_YUY2, CS_UYVY (4:2:2) and CS_Y41P (4:1:1): groups of pixels that share their chroma.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/studio.h"

namespace qv {
namespace {

// Where the samples of a group stand in its bytes.
struct Layout {
  uint8_t pixels, bytes;
  uint8_t sharing;  // pixels to a chroma sample
  uint8_t y[8], u[2], v[2];
};
constexpr Layout kYuy2 = {2, 4, 2, {0, 2}, {1}, {3}};
constexpr Layout kUyvy = {2, 4, 2, {1, 3}, {0}, {2}};
constexpr Layout kY41p = {8, 12, 4, {1, 3, 5, 7, 8, 9, 10, 11}, {0, 4}, {2, 6}};

template <const Layout& kLayout>
Status PackedToRgbRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; width -= kLayout.pixels, src += kLayout.bytes) {
    uint8_t group[12];  // read whole: in place, the pixels may cover it
    for (size_t i = 0; i < kLayout.bytes; ++i) group[i] = src[i];
    for (size_t x = 0; x < kLayout.pixels; ++x, dst += 3) {
      const size_t chroma = x / kLayout.sharing;
      StoreRgb(RgbFromStudio({group[kLayout.y[x]], group[kLayout.u[chroma]], group[kLayout.v[chroma]]}), dst, args);
    }
  }
  return kSuccess;
}

// A chroma sample is the mean of its pixels' bytes, rounded down.
template <const Layout& kLayout>
Status RgbToPackedRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  for (; width > 0; width -= kLayout.pixels, dst += kLayout.bytes) {
    uint8_t group[12] = {};
    for (size_t chroma = 0; chroma * kLayout.sharing < kLayout.pixels; ++chroma) {
      int u = 0, v = 0;
      for (size_t x = chroma * kLayout.sharing; x < (chroma + 1) * kLayout.sharing; ++x, src += 3) {
        const Studio yuv = StudioFromRgb(LoadRgb(src, args));
        group[kLayout.y[x]] = yuv.y;
        u += yuv.u;
        v += yuv.v;
      }
      group[kLayout.u[chroma]] = static_cast<uint8_t>(u / kLayout.sharing);
      group[kLayout.v[chroma]] = static_cast<uint8_t>(v / kLayout.sharing);
    }
    for (size_t i = 0; i < kLayout.bytes; ++i) dst[i] = group[i];
  }
  return kSuccess;
}

template <const Layout& kLayout>
constexpr Kernel ToRgb(const char* name) noexcept {
  return {name, PackedToRgbRow<kLayout>, kLayout.bytes, 3 * kLayout.pixels, kLayout.pixels};
}
template <const Layout& kLayout>
constexpr Kernel FromRgb(const char* name) noexcept {
  return {name, RgbToPackedRow<kLayout>, 3 * kLayout.pixels, kLayout.bytes, kLayout.pixels};
}

}  // namespace

const Kernel YUY2ToRGB = ToRgb<kYuy2>("YUY2ToRGB"), RGBToYUY2 = FromRgb<kYuy2>("RGBToYUY2");
const Kernel UYVYToRGB = ToRgb<kUyvy>("UYVYToRGB"), RGBToUYVY = FromRgb<kUyvy>("RGBToUYVY");
const Kernel Y41PToRGB = ToRgb<kY41p>("Y41PToRGB"), RGBToY41P = FromRgb<kY41p>("RGBToY41P");

}  // namespace qv
