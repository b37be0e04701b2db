// libyuv: packed pixels line by line through its usual four-byte ones, which stay in the nearest cache.
#include <libyuv.h>

#include "measure.h"

namespace qv_bench {
namespace {

using Step = int (*)(const uint8_t* src, int src_stride, uint8_t* dst, int dst_stride, int width, int height);

Peer Packed(const char* pair, int src_bytes, Step first, Step second, int dst_bytes) {
  return {"libyuv", "formulas", pair, [=](const uint8_t* src, uint8_t* dst, Size size) {
            const int src_line = src_bytes * size.width, line = 4 * size.width, dst_line = dst_bytes * size.width;
            std::vector<uint8_t> between(static_cast<size_t>(line));
            for (int32_t y = 0; y < size.height; ++y, src += src_line, dst += dst_line) {
              first(src, src_line, between.data(), line, size.width, 1);
              second(between.data(), line, dst, dst_line, size.width, 1);
            }
            return true;
          }};
}

Peer Swap(const char* pair) {
  return {"libyuv", "formulas", pair, [](const uint8_t* src, uint8_t* dst, Size size) {
            return libyuv::RAWToRGB24(src, 3 * size.width, dst, 3 * size.width, size.width, size.height) == 0;
          }};
}

// What is R, G, B in memory is RAW here.
const AddPeers kLibyuv({Swap("RGB>BGR"), Swap("BGR>RGB"),
                        Packed("RGB>YUY2", 3, libyuv::RAWToARGB, libyuv::ARGBToYUY2, 2),
                        Packed("RGB>UYVY", 3, libyuv::RAWToARGB, libyuv::ARGBToUYVY, 2),
                        Packed("YUY2>RGB", 2, libyuv::YUY2ToARGB, libyuv::ARGBToRAW, 3),
                        Packed("UYVY>RGB", 2, libyuv::UYVYToARGB, libyuv::ARGBToRAW, 3)});

}  // namespace
}  // namespace qv_bench
