// FFmpeg's libswscale: packed pixels, and planes of a sixteenth.
extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include "measure.h"

namespace qv_bench {
namespace {

Peer Scale(const char* pair, AVPixelFormat from, AVPixelFormat to) {
  return {"swscale", "formulas", pair,
          [=, context = static_cast<SwsContext*>(nullptr)](const uint8_t* src, uint8_t* dst, Size size) mutable {
            context = sws_getCachedContext(context, size.width, size.height, from, size.width, size.height, to,
                                           SWS_POINT, nullptr, nullptr, nullptr);
            uint8_t *in[4], *out[4];
            int in_lines[4], out_lines[4];
            av_image_fill_arrays(in, in_lines, src, from, size.width, size.height, 1);
            av_image_fill_arrays(out, out_lines, dst, to, size.width, size.height, 1);
            return context && sws_scale(context, in, in_lines, 0, size.height, out, out_lines) == size.height;
          }};
}

const AddPeers kSwscale(
    {Scale("RGB>BGR", AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24), Scale("BGR>RGB", AV_PIX_FMT_BGR24, AV_PIX_FMT_RGB24),
     Scale("RGB>YUY2", AV_PIX_FMT_RGB24, AV_PIX_FMT_YUYV422), Scale("YUY2>RGB", AV_PIX_FMT_YUYV422, AV_PIX_FMT_RGB24),
     Scale("RGB>UYVY", AV_PIX_FMT_RGB24, AV_PIX_FMT_UYVY422), Scale("UYVY>RGB", AV_PIX_FMT_UYVY422, AV_PIX_FMT_RGB24),
     Scale("RGB>YVU9", AV_PIX_FMT_RGB24, AV_PIX_FMT_YUV410P), Scale("YVU9>RGB", AV_PIX_FMT_YUV410P, AV_PIX_FMT_RGB24)});

}  // namespace
}  // namespace qv_bench
