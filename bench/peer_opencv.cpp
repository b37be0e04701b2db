// OpenCV: its own conversions, and matrices where the conversion is one (whose numbers do not matter for the time).
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "measure.h"

namespace qv_bench {
namespace {

cv::Mat Frame(const uint8_t* bytes, Size size, int channels) {
  return {size.height, size.width, CV_8UC(channels), const_cast<uint8_t*>(bytes)};
}

Peer Cvt(const char* pair, int code, int src_channels = 3) {
  return {"OpenCV cvtColor", "formulas", pair, [=](const uint8_t* src, uint8_t* dst, Size size) {
            cv::Mat to = Frame(dst, size, 3);
            cv::cvtColor(Frame(src, size, src_channels), to, code);
            return true;
          }};
}

Peer Two(const char* pair, int to_rgb, int from_rgb, int src_channels = 3) {
  return {"OpenCV, two calls", "formulas", pair, [=](const uint8_t* src, uint8_t* dst, Size size) {
            static cv::Mat rgb;
            cv::cvtColor(Frame(src, size, src_channels), rgb, to_rgb);
            cv::Mat to = Frame(dst, size, 3);
            cv::cvtColor(rgb, to, from_rgb);
            return true;
          }};
}

Peer Matrix(const char* pair) {
  return {"OpenCV transform", "formulas", pair, [](const uint8_t* src, uint8_t* dst, Size size) {
            static const cv::Matx34f kMatrix(0.5f, 0.3f, 0.1f, 0, 0.2f, 0.6f, 0.1f, 0, 0.1f, -0.3f, 0.8f, 16);
            cv::Mat to = Frame(dst, size, 3);
            cv::transform(Frame(src, size, 3), to, kMatrix);
            return true;
          }};
}

Peer Not(const char* pair) {
  return {"OpenCV bitwise_not", "formulas", pair, [](const uint8_t* src, uint8_t* dst, Size size) {
            cv::Mat to = Frame(dst, size, 3);
            cv::bitwise_not(Frame(src, size, 3), to);
            return true;
          }};
}

std::vector<Peer> All() {
  cv::setNumThreads(1);
  return {Cvt("RGB>BGR", cv::COLOR_RGB2BGR),
          Cvt("BGR>RGB", cv::COLOR_BGR2RGB),
          Cvt("RGB>YUV", cv::COLOR_RGB2YUV),
          Cvt("YUV>RGB", cv::COLOR_YUV2RGB),
          Cvt("RGB>YCBCR", cv::COLOR_RGB2YCrCb),
          Cvt("YCBCR>RGB", cv::COLOR_YCrCb2RGB),
          Cvt("RGB>XYZ", cv::COLOR_RGB2XYZ),
          Cvt("XYZ>RGB", cv::COLOR_XYZ2RGB),
          Cvt("RGB>LAB", cv::COLOR_RGB2Lab),
          Cvt("LAB>RGB", cv::COLOR_Lab2RGB),
          Cvt("RGB>HSV", cv::COLOR_RGB2HSV),
          Cvt("HSV>RGB", cv::COLOR_HSV2RGB),
          Cvt("RGB>HLS", cv::COLOR_RGB2HLS),
          Cvt("HLS>RGB", cv::COLOR_HLS2RGB),
          Cvt("YUY2>RGB", cv::COLOR_YUV2RGB_YUY2, 2),
          Cvt("UYVY>RGB", cv::COLOR_YUV2RGB_UYVY, 2),
          Two("HSV>XYZ", cv::COLOR_HSV2RGB, cv::COLOR_RGB2XYZ),
          Two("YCBCR>HLS", cv::COLOR_YCrCb2RGB, cv::COLOR_RGB2HLS),
          Two("LAB>HSV", cv::COLOR_Lab2RGB, cv::COLOR_RGB2HSV),
          Two("HLS>LAB", cv::COLOR_HLS2RGB, cv::COLOR_RGB2Lab),
          Two("YUY2>YCBCR", cv::COLOR_YUV2RGB_YUY2, cv::COLOR_RGB2YCrCb, 2),
          Matrix("RGB>XYZ"),
          Matrix("XYZ>RGB"),
          Matrix("RGB>YCBCR"),
          Matrix("YCBCR>RGB"),
          Matrix("RGB>YIQ"),
          Matrix("YIQ>RGB"),
          Matrix("RGB>YUV"),
          Matrix("YUV>RGB"),
          Not("RGB>CMY"),
          Not("CMY>RGB")};
}

const AddPeers kOpenCv(All());

}  // namespace
}  // namespace qv_bench
