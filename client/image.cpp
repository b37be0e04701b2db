#include "image.h"

#include <fstream>
#include <string_view>

#include "failure.h"
#include "files.h"

namespace client {

void CheckSize(const std::string& name, uint64_t width, uint64_t height, uint32_t bits_per_pixel) {
  if (width == 0 || height == 0) Fail(name, ": the image is empty");
  constexpr uint64_t kMostPixelsPerSide = INT32_MAX;
  // Both factors are below 2^31, so the product of pixels fits; it is divided before the bits come in.
  if (width > kMostPixelsPerSide || height > kMostPixelsPerSide ||
      width * height > kMostImageBytes / bits_per_pixel * 8) {
    Fail(name, ": an image of ", width, " x ", height, " pixels is too large");
  }
}

size_t LineBytes(const Space& space, int32_t width) { return (static_cast<size_t>(width) * space.bits + 7) / 8; }

size_t FrameBytes(const Space& space, int32_t width, int32_t lines) {
  const size_t count = static_cast<size_t>(lines);
  return space.Planar() ? (static_cast<size_t>(width) * count * space.bits + 7) / 8 : LineBytes(space, width) * count;
}

std::unique_ptr<ImageSource> OpenImage(const std::string& path) {
  std::ifstream file(NativePath(path), std::ios::binary);
  char head[4] = {};
  if (!file.read(head, sizeof head)) Fail(path, file.eof() ? ": no image, the file is too short" : ": cannot be read");

  const std::string_view magic(head, sizeof head);
  using namespace std::string_view_literals;
  if (magic.starts_with("P5"sv) || magic.starts_with("P6"sv)) return OpenNetpbm(path);
  if (magic.starts_with("\xff\xd8\xff"sv)) return OpenJpeg(path);
  for (const std::string_view tiff : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (magic == tiff) return OpenTiff(path);
  }
  Fail(path, ": neither PPM, PGM, TIFF nor JPEG (raw pixels need --size)");
}

}  // namespace client
