// CS_YUV: analog-television YUV; chroma rescaled from its span and offset to 0..255. A converter with settings of its
// own (RowArgs::record, YuvSettings) replaces the spans and offsets and stores luma through its table.
#include <algorithm>

#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"
#include "qvclr/yuv_settings.h"

namespace qv {
namespace {

constexpr YuvSettings kPlain;

const YuvSettings& SettingsOf(const RowArgs& args) {
  return args.record ? *static_cast<const YuvSettings*>(args.record) : kPlain;
}

uint8_t StoredLuma(double luma, const YuvSettings& settings) {
  const auto span = static_cast<double>(settings.luma_span);
  const uint8_t index = settings.luma_span == 255 ? ClampedByte(luma) : ClampedByte(luma * 255 / span + 0.5);
  return settings.stored_luma ? settings.stored_luma[index] : index;
}

int64_t LumaOf(uint8_t stored, const YuvSettings& settings) {
  const uint8_t index = settings.stored_luma ? settings.index_of_stored[stored] : stored;
  return index * settings.luma_span / 255;
}

void RGBToYUVPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto [r, g, b] = LoadRgb(src, args);
  const YuvSettings& settings = SettingsOf(args);
  const double u = -0.146 * r - 0.288 * g + 0.434 * b + static_cast<double>(settings.u_offset);
  const double v = 0.617 * r - 0.517 * g - 0.1 * b + static_cast<double>(settings.v_offset);
  dst[0] = StoredLuma(0.299 * r + 0.587 * g + 0.114 * b, settings);
  dst[1] = ClampedByte(u / settings.u_span * 255 + 0.5);
  dst[2] = ClampedByte(v / settings.v_span * 255 + 0.5);
}

// The two small cross terms, -29 and -33, belong to the inverse. The shifts round toward minus infinity. 64 bits hold
// whatever spans and offsets a record names.
void YUVToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const YuvSettings& settings = SettingsOf(args);
  const int64_t y = LumaOf(src[0], settings);
  const int64_t u = static_cast<int64_t>(src[1] / 255.0 * settings.u_span) - settings.u_offset;
  const int64_t v = static_cast<int64_t>(src[2] / 255.0 * settings.v_span) - settings.v_offset;
  const auto channel = [&](int64_t of_u, int64_t of_v) {
    return static_cast<int>(std::clamp<int64_t>(y + ((of_v * v + of_u * u) >> 15), 0, 255));
  };
  StoreRgb({channel(-29, 37221), channel(-12943, -18940), channel(66883, -33)}, dst, args);
}

}  // namespace

const Kernel RGBToYUV = PixelKernel<RGBToYUVPixel, 3, 3>("RGBToYUV");
const Kernel YUVToRGB = PixelKernel<YUVToRGBPixel, 3, 3>("YUVToRGB");

}  // namespace qv
