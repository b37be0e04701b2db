// Sinks that store pixels uncompressed in one piece: raw pixels and PPM.
#include <fstream>

#include "failure.h"
#include "files.h"
#include "image.h"

namespace client {
namespace {

class StreamSink : public ImageSink {
 public:
  StreamSink(const std::string& path, const ImageInfo& info, const std::string& header)
      : path_(path), info_(info), file_(NativePath(path), std::ios::binary | std::ios::trunc) {
    if (!file_) Fail(path, ": cannot be created");
    file_ << header;
  }

  void WriteLines(uint8_t* from, int32_t lines) override {
    const size_t bytes = FrameBytes(*info_.space, info_.width, lines);
    if (!file_.write(reinterpret_cast<const char*>(from), static_cast<std::streamsize>(bytes))) WritingFailed();
  }

  void Finish() override {
    file_.close();
    if (!file_) WritingFailed();
  }

 private:
  [[noreturn]] void WritingFailed() { Fail(path_, ": writing failed (is the disk full?)"); }

  std::string path_;
  ImageInfo info_;
  std::ofstream file_;
};

}  // namespace

std::unique_ptr<ImageSink> CreateRaw(const std::string& path, const ImageInfo& info) {
  return std::make_unique<StreamSink>(path, info, "");
}

std::unique_ptr<ImageSink> CreatePpm(const std::string& path, const ImageInfo& info) {
  const std::string size = std::to_string(info.width) + " " + std::to_string(info.height);
  return std::make_unique<StreamSink>(path, info, "P6\n" + size + "\n255\n");
}

}  // namespace client
