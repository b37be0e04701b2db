// Sources whose pixels stand uncompressed in one piece: raw pixels, PPM and PGM.
#include <cctype>
#include <fstream>

#include "failure.h"
#include "files.h"
#include "image.h"

namespace client {
namespace {

class StreamSource : public ImageSource {
 public:
  explicit StreamSource(const std::string& path) : path_(path), file_(NativePath(path), std::ios::binary) {
    std::error_code error;
    file_bytes_ = std::filesystem::file_size(NativePath(path), error);
    if (!file_ || error) Fail(path, ": cannot be read");
  }

  void Raw(const Space& space, uint64_t width, uint64_t height) {
    SetSize(space, width, height);
    const size_t wanted = FrameBytes(space, info_.width, info_.height);
    if (file_bytes_ != wanted) {
      Fail(path_, ": ", file_bytes_, " bytes, but ", width, " x ", height, " pixels of ", space.name, " have ", wanted);
    }
  }

  void Netpbm() {
    gray_ = file_.get() == 'P' && file_.get() == '5';
    const uint64_t width = HeaderNumber(), height = HeaderNumber(), white = HeaderNumber();
    if (white != 255) Fail(path_, ": only a maximum of 255 is supported, not ", white);
    SetSize(SpaceOf(CS_RGB), width, height);
    const size_t wanted = size_t{width} * height * (gray_ ? 1 : 3);
    const size_t left = file_bytes_ - static_cast<uint64_t>(file_.tellg());
    if (left < wanted) Fail(path_, ": too short, ", left, " of ", wanted, " bytes of pixels");
  }

  void ReadLines(uint8_t* to, int32_t lines) override {
    const size_t bytes = FrameBytes(*info_.space, info_.width, lines);
    if (!gray_) return Read(to, bytes);
    // The grey bytes are read to the end of the lines and spread from there: writing stays behind reading.
    const uint8_t* grey = to + bytes / 3 * 2;
    Read(to + bytes / 3 * 2, bytes / 3);
    for (size_t i = 0; i < bytes; i += 3) to[i] = to[i + 1] = to[i + 2] = *grey++;
  }

 private:
  void SetSize(const Space& space, uint64_t width, uint64_t height) {
    CheckSize(path_, width, height, space.bits);
    info_.width = static_cast<int32_t>(width);
    info_.height = static_cast<int32_t>(height);
    info_.space = &space;
  }

  // Numbers are preceded by blanks and comments; one blank follows the last one, and is taken here.
  uint64_t HeaderNumber() {
    int c = file_.get();
    while (c == '#' || std::isspace(c)) {
      while (c == '#' && file_ && file_.peek() != '\n') file_.get();
      c = file_.get();
    }
    uint64_t number = 0;
    for (; std::isdigit(c) && number < UINT32_MAX; c = file_.get()) {
      number = number * 10 + static_cast<uint64_t>(c - '0');
    }
    if (!file_ || !std::isspace(c)) Fail(path_, ": the header is damaged");
    return number;
  }

  void Read(uint8_t* to, size_t bytes) {
    if (!file_.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(bytes))) Fail(path_, ": too short");
  }

  std::string path_;
  std::ifstream file_;
  uint64_t file_bytes_ = 0;
  bool gray_ = false;
};

}  // namespace

std::unique_ptr<ImageSource> OpenRaw(const std::string& path, const Space& space, uint64_t width, uint64_t height) {
  auto source = std::make_unique<StreamSource>(path);
  source->Raw(space, width, height);
  return source;
}

std::unique_ptr<ImageSource> OpenNetpbm(const std::string& path) {
  auto source = std::make_unique<StreamSource>(path);
  source->Netpbm();
  return source;
}

}  // namespace client
