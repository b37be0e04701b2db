// The luma-chroma formulas, word for word, one pixel at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qv_test {

void YCbCrFromRgb(const uint8_t* rgb, uint8_t* ycc);
void YCbCrToRgb(const uint8_t* ycc, uint8_t* rgb);
void YiqFromRgb(const uint8_t* rgb, uint8_t* yiq);
void YiqToRgb(const uint8_t* yiq, uint8_t* rgb);
void YuvFromRgb(const uint8_t* rgb, uint8_t* yuv);
void YuvToRgb(const uint8_t* yuv, uint8_t* rgb);

// CS_CMYK_PROFILE: the JFIF coding, in 65536ths, of the complements of C, M, Y; then K.
void YccKFromRgb(const uint8_t* rgb, uint8_t* ycck);
void YccKToRgb(const uint8_t* ycck, uint8_t* rgb);

// The four layouts of video, a whole frame without padding.
struct VideoSamples {
  size_t y, u, v;  // offsets in the frame
};
VideoSamples VideoSamplesOf(uint32_t space, size_t width, size_t height, size_t x, size_t y);
std::vector<uint8_t> VideoFromRgb(uint32_t space, const std::vector<uint8_t>& rgb, size_t width, size_t height);
std::vector<uint8_t> VideoToRgb(uint32_t space, const std::vector<uint8_t>& video, size_t width, size_t height);

}  // namespace qv_test
