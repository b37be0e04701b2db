// TIFF output: RGB, CMYK or Lab in strips, with an embedded profile if one is wanted.
#include <algorithm>

#include "failure.h"
#include "image.h"
#include "tiff_file.h"

namespace client {
namespace {

constexpr uint32_t kStripBytes = 64 * 1024;
constexpr double kUsualDpi = 72;
constexpr size_t kMostBytesOfClassicTiff = 0xF0000000;  // offsets have 32 bits; the rest is room for tags

uint16_t Photometric(const ImageInfo& info) {
  switch (info.space->id) {
    case CS_RGB: return PHOTOMETRIC_RGB;
    case CS_CMYK: return PHOTOMETRIC_SEPARATED;
    case CS_LAB: return info.lab == LabCoding::kOffset ? PHOTOMETRIC_ICCLAB : PHOTOMETRIC_CIELAB;
    default: Fail("TIFF files hold rgb, cmyk and lab only, not ", info.space->name, " (--raw writes any space)");
  }
}

const char* Mode(const ImageInfo& info) {
  return FrameBytes(*info.space, info.width, info.height) > kMostBytesOfClassicTiff ? "w8" : "w";
}

class TiffSink : public ImageSink {
 public:
  TiffSink(const std::string& path, const ImageInfo& info, const TiffOptions& options)
      : line_bytes_(LineBytes(*info.space, info.width)), file_(path, Mode(info)) {
    file_.Set(TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(info.width));
    file_.Set(TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(info.height));
    file_.Set(TIFFTAG_BITSPERSAMPLE, 8);
    file_.Set(TIFFTAG_SAMPLESPERPIXEL, info.space->bits / 8);
    file_.Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file_.Set(TIFFTAG_PHOTOMETRIC, Photometric(info));
    if (info.space->id == CS_CMYK) file_.Set(TIFFTAG_INKSET, INKSET_CMYK);
    file_.Set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    file_.Set(TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(std::max(size_t{1}, kStripBytes / line_bytes_)));
    file_.Set(TIFFTAG_XRESOLUTION, info.dpi_x > 0 ? info.dpi_x : kUsualDpi);
    file_.Set(TIFFTAG_YRESOLUTION, info.dpi_y > 0 ? info.dpi_y : kUsualDpi);
    file_.Set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    file_.Set(TIFFTAG_COMPRESSION, options.compress ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE);
    if (options.compress) file_.Set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (!options.profile.empty()) {
      file_.Set(TIFFTAG_ICCPROFILE, static_cast<uint32_t>(options.profile.size()), options.profile.data());
    }
  }

  void WriteLines(uint8_t* from, int32_t lines) override {
    for (; lines > 0; --lines, from += line_bytes_) {
      if (TIFFWriteScanline(file_.get(), from, next_line_++, 0) != 1) file_.FailWithReason("writing failed");
    }
  }

  void Finish() override { file_.Close(); }

 private:
  size_t line_bytes_;
  TiffFile file_;
  uint32_t next_line_ = 0;
};

}  // namespace

std::unique_ptr<ImageSink> CreateTiff(const std::string& path, const ImageInfo& info, const TiffOptions& options) {
  return std::make_unique<TiffSink>(path, info, options);
}

}  // namespace client
