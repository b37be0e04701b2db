// Images as the client sees them: sources that give lines of pixels from the top, sinks that take them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "names.h"

namespace client {

// How a and b of Lab are stored. The library's profile methods add 128 to them (ICCLab of TIFF), its other methods
// store signed bytes (CIELab of TIFF).
enum class LabCoding { kUnknown, kSigned, kOffset };

struct ImageInfo {
  int32_t width = 0, height = 0;
  const Space* space = nullptr;
  LabCoding lab = LabCoding::kUnknown;  // unknown: bytes as the conversion has them
  double dpi_x = 0, dpi_y = 0;          // 0: not told
};

constexpr double kCentimetresPerInch = 2.54;

// No image may be larger than this, decoded.
constexpr size_t kMostImageBytes = size_t{1} << 32;

// Checks a size that a file or a user claims; Fail() tells the name.
void CheckSize(const std::string& name, uint64_t width, uint64_t height, uint32_t bits_per_pixel);

size_t LineBytes(const Space& space, int32_t width);
// Bytes of some lines in a file; a planar frame has no lines of its own and is shorter than its line sizes add up to.
size_t FrameBytes(const Space& space, int32_t width, int32_t lines);

class ImageSource {
 public:
  virtual ~ImageSource() = default;
  const ImageInfo& info() const { return info_; }
  // The next lines, without padding. Fails when the file ends before.
  virtual void ReadLines(uint8_t* to, int32_t lines) = 0;

 protected:
  ImageInfo info_;
};

class ImageSink {
 public:
  virtual ~ImageSink() = default;
  virtual void WriteLines(uint8_t* from, int32_t lines) = 0;  // may use the lines as scratch memory
  virtual void Finish() = 0;                                  // all is on its way to the disk, or it fails
};

std::unique_ptr<ImageSource> OpenRaw(const std::string& path, const Space& space, uint64_t width, uint64_t height);
std::unique_ptr<ImageSource> OpenImage(const std::string& path);  // of any known format, told by its first bytes
std::unique_ptr<ImageSource> OpenNetpbm(const std::string& path);
std::unique_ptr<ImageSource> OpenTiff(const std::string& path);
std::unique_ptr<ImageSource> OpenJpeg(const std::string& path);

struct TiffOptions {
  bool compress = false;
  std::vector<uint8_t> profile;  // to embed; empty: none
};

std::unique_ptr<ImageSink> CreateRaw(const std::string& path, const ImageInfo& info);
std::unique_ptr<ImageSink> CreatePpm(const std::string& path, const ImageInfo& info);
std::unique_ptr<ImageSink> CreateTiff(const std::string& path, const ImageInfo& info, const TiffOptions& options);

}  // namespace client
