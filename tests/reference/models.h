// What the pixel kernels are held against: their formulas word for word, one pixel at a time. Angles, powers and roots
// are those of wider numbers.
#pragma once

#include <cstddef>
#include <string_view>

#include "support/bytes.h"

namespace qv_test {

// x to the n-th power, rounded once.
double ExactPower(double x, uint32_t n);

// The four layouts of video, a whole frame without padding.
struct VideoSamples {
  size_t y, u, v;  // offsets in the frame
};
VideoSamples VideoSamplesOf(uint32_t space, size_t width, size_t height, size_t x, size_t y);

struct ModelSettings {
  int32_t black_param = 175;
  const uint8_t* table = nullptr;
};
struct ModelFrame {
  Bytes bytes;                  // without padding
  std::vector<size_t> refused;  // pixels, ascending; their bytes are 0
};
// What the kernel of that name makes of a frame; R first.
ModelFrame FrameByModel(std::string_view kernel, const Bytes& source, size_t width, size_t height,
                        const ModelSettings& settings);

}  // namespace qv_test
