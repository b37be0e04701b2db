#include "reference/luma_chroma_model.h"

#include <algorithm>

#include "Qvclr15x.h"

namespace qv_test {
namespace {

uint8_t Clamped(double value) { return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0)); }
uint8_t Clamped(int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }
uint8_t SignedByte(double value) { return static_cast<uint8_t>(static_cast<int8_t>(std::clamp(value, -128.0, 127.0))); }
uint8_t LowByte(double value) { return static_cast<uint8_t>(static_cast<int32_t>(value)); }

void StudioToRgb(int32_t luma, int32_t cb, int32_t cr, uint8_t* rgb) {
  const int32_t y = (luma - 16) * 1192, u = cb - 128, v = cr - 128;
  rgb[0] = Clamped((y + 1634 * v + 512) / 1024);
  rgb[1] = Clamped((y - 400 * u - 833 * v + 512) / 1024);
  rgb[2] = Clamped((y + 2066 * u + 512) / 1024);
}

}  // namespace

void YCbCrFromRgb(const uint8_t* rgb, uint8_t* ycc) {
  const double r = rgb[0], g = rgb[1], b = rgb[2];
  ycc[0] = Clamped(0.299 * r + 0.587 * g + 0.114 * b);
  ycc[1] = SignedByte(-0.16874 * r - 0.33126 * g + 0.5 * b);
  ycc[2] = SignedByte(0.5 * r - 0.41869 * g - 0.08131 * b);
}

void YCbCrToRgb(const uint8_t* ycc, uint8_t* rgb) {
  const double y = ycc[0], cb = static_cast<int8_t>(ycc[1]), cr = static_cast<int8_t>(ycc[2]);
  rgb[0] = Clamped(y + 1.402 * cr);
  rgb[1] = Clamped(y - 0.3441363 * cb - 0.71413636 * cr);
  rgb[2] = Clamped(y + 1.772 * cb);
}

void YiqFromRgb(const uint8_t* rgb, uint8_t* yiq) {
  const double r = rgb[0], g = rgb[1], b = rgb[2];
  yiq[0] = Clamped((0.299 * r + 0.587 * g + 0.114 * b) / 263 * 255 + 0.5);
  yiq[1] = Clamped((0.596 * r - 0.274 * g - 0.322 * b + 152) / 303 * 255 + 0.5);
  yiq[2] = Clamped((0.212 * r - 0.523 * g + 0.311 * b + 134) / 267 * 255 + 0.5);
}

void YiqToRgb(const uint8_t* yiq, uint8_t* rgb) {
  const double y = static_cast<int32_t>(yiq[0] / 255.0 * 263);
  const double i = static_cast<int32_t>(yiq[1] / 255.0 * 303 - 152);
  const double q = static_cast<int32_t>(yiq[2] / 255.0 * 267 - 134);
  rgb[0] = Clamped(y + 0.956 * i + 0.621 * q);
  rgb[1] = Clamped(y - 0.272 * i - 0.647 * q);
  rgb[2] = Clamped(y - 1.105 * i + 1.702 * q);
}

void YuvFromRgb(const uint8_t* rgb, uint8_t* yuv) {
  const double r = rgb[0], g = rgb[1], b = rgb[2];
  yuv[0] = Clamped(0.299 * r + 0.587 * g + 0.114 * b);
  yuv[1] = Clamped((-0.146 * r - 0.288 * g + 0.434 * b + 112) / 223 * 255 + 0.5);
  yuv[2] = Clamped((0.617 * r - 0.517 * g - 0.1 * b + 138) / 275 * 255 + 0.5);
}

void YuvToRgb(const uint8_t* yuv, uint8_t* rgb) {
  const int32_t y = yuv[0];
  const int32_t u = static_cast<int32_t>(yuv[1] / 255.0 * 223) - 112;
  const int32_t v = static_cast<int32_t>(yuv[2] / 255.0 * 275) - 138;
  rgb[0] = Clamped(y + ((37221 * v - 29 * u) >> 15));
  rgb[1] = Clamped(y + ((-18940 * v - 12943 * u) >> 15));
  rgb[2] = Clamped(y + ((-33 * v + 66883 * u) >> 15));
}

void YccKFromRgb(const uint8_t* rgb, uint8_t* ycck) {
  const int32_t largest = std::max({rgb[0], rgb[1], rgb[2]});
  int64_t paper[3] = {255, 255, 255};  // the complements of C, M, Y
  for (int i = 0; i < 3 && largest > 0; ++i) paper[i] -= (2 * 255 * (largest - rgb[i]) + largest) / (2 * largest);
  const int64_t r = paper[0], g = paper[1], b = paper[2], half_and_offset = 0x807FFF;
  ycck[0] = static_cast<uint8_t>((19595 * r + 38470 * g + 7471 * b + 32768) >> 16);
  ycck[1] = static_cast<uint8_t>((-11059 * r - 21709 * g + 32768 * b + half_and_offset) >> 16);
  ycck[2] = static_cast<uint8_t>((32768 * r + half_and_offset - 27439 * g - 5329 * b) >> 16);
  ycck[3] = static_cast<uint8_t>(255 - largest);
}

void YccKToRgb(const uint8_t* ycck, uint8_t* rgb) {
  const int32_t y = ycck[0], cb = ycck[1] - 128, cr = ycck[2] - 128, k = ycck[3];
  const uint8_t paper[3] = {Clamped(y + ((91881 * cr + 32768) >> 16)),
                            Clamped(y + ((-22554 * cb + 32768 - 46802 * cr) >> 16)),
                            Clamped(y + ((116130 * cb + 32768) >> 16))};
  for (int i = 0; i < 3; ++i) {
    const int32_t ink = 255 - paper[i], covered = (ink * k + 127) / 255;  // to nearest; 255 is odd: no ties
    rgb[i] = static_cast<uint8_t>(255 - (ink - covered + k));
  }
}

VideoSamples VideoSamplesOf(uint32_t space, size_t width, size_t height, size_t x, size_t y) {
  const size_t pixel = y * width + x, pixels = width * height, pair = pixel / 2 * 4, eight = pixel / 8 * 12;
  if (space == CS_YUY2) return {pair + x % 2 * 2, pair + 1, pair + 3};
  if (space == CS_UYVY) return {pair + 1 + x % 2 * 2, pair, pair + 2};
  if (space == CS_Y41P) {
    constexpr size_t kLuma[] = {1, 3, 5, 7, 8, 9, 10, 11};
    const size_t chroma = x % 8 < 4 ? 0 : 4;
    return {eight + kLuma[x % 8], eight + chroma, eight + chroma + 2};
  }
  const size_t block = y / 4 * (width / 4) + x / 4;  // CS_YVU9
  return {pixel, pixels + pixels / 16 + block, pixels + block};
}

std::vector<uint8_t> VideoFromRgb(uint32_t space, const std::vector<uint8_t>& rgb, size_t width, size_t height) {
  const size_t group = space == CS_YUY2 || space == CS_UYVY ? 2 : 4;
  const bool planar = space == CS_YVU9;
  std::vector<uint8_t> video(planar ? width * height / 8 * 9 : width * height * (group == 2 ? 4 : 3) / 2);
  size_t u_sum = 0, v_sum = 0;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const uint8_t* pixel = &rgb[(y * width + x) * 3];
      const double r = pixel[0], g = pixel[1], b = pixel[2];
      const VideoSamples at = VideoSamplesOf(space, width, height, x, y);
      video[at.y] = LowByte((100 * (b - 0.5) + 516 * (g - 0.5) + 263 * (r - 0.5)) / 1024 + 16);
      if (x % group == 0) u_sum = v_sum = 0;
      u_sum += LowByte((450 * (b - 0.5) - 298 * (g - 0.5) - 152 * (r - 0.5)) / 1024 + 128);
      v_sum += LowByte((-73 * (b - 0.5) - 377 * (g - 0.5) + 450 * (r - 0.5)) / 1024 + 128);
      if (x % group != group - 1) continue;
      const bool blend = planar && y % 4 != 0;
      video[at.u] = static_cast<uint8_t>(blend ? (video[at.u] + u_sum) / 5 : u_sum / group);
      video[at.v] = static_cast<uint8_t>(blend ? (video[at.v] + v_sum) / 5 : v_sum / group);
    }
  }
  return video;
}

std::vector<uint8_t> VideoToRgb(uint32_t space, const std::vector<uint8_t>& video, size_t width, size_t height) {
  std::vector<uint8_t> rgb(width * height * 3);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const VideoSamples at = VideoSamplesOf(space, width, height, x, y);
      StudioToRgb(video[at.y], video[at.u], video[at.v], &rgb[(y * width + x) * 3]);
    }
  }
  return rgb;
}

}  // namespace qv_test
