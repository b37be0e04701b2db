// TIFF: 8-bit RGB, CMYK and Lab, in strips or tiles, with samples side by side or in planes. JPEG-compressed YCbCr is
// read as RGB. Samples beyond those of the space (alpha) are left out.
#include <algorithm>
#include <cstring>

#include "failure.h"
#include "image.h"
#include "tiff_file.h"

namespace client {
namespace {

// Memory that is touched only where a file has pixels for it, however large it claims to be.
class Block {
 public:
  void Allocate(size_t bytes) { bytes_ = std::make_unique_for_overwrite<uint8_t[]>(bytes); }
  uint8_t* at(size_t offset) { return bytes_.get() + offset; }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
};

class TiffSource : public ImageSource {
 public:
  explicit TiffSource(const std::string& path) : path_(path), file_(path, "r") {
    ReadLayout();
    ReadUnits();
    ReadResolution();
  }

  void ReadLines(uint8_t* to, int32_t lines) override {
    const size_t line_bytes = width_ * channels_;
    for (int32_t line = 0; line < lines; ++line, ++next_line_, to += line_bytes) {
      const size_t line_in_row = next_line_ % unit_lines_;
      if (line_in_row == 0) ReadRowOfUnits(next_line_);
      std::memcpy(to, row_.at(line_in_row * line_bytes), line_bytes);
    }
  }

 private:
  void ReadLayout() {
    uint32_t width = 0, height = 0;
    TIFFGetField(file_.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(file_.get(), TIFFTAG_IMAGELENGTH, &height);

    uint16_t colours = file_.Number(TIFFTAG_PHOTOMETRIC);
    if (colours == PHOTOMETRIC_YCBCR && file_.Number(TIFFTAG_COMPRESSION) == COMPRESSION_JPEG) {
      file_.Set(TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
      colours = PHOTOMETRIC_RGB;
    }
    switch (colours) {
      case PHOTOMETRIC_RGB: info_.space = &SpaceOf(CS_RGB); break;
      case PHOTOMETRIC_SEPARATED: info_.space = &SpaceOf(CS_CMYK); break;
      case PHOTOMETRIC_CIELAB: info_.lab = LabCoding::kSigned; break;
      case PHOTOMETRIC_ICCLAB: info_.lab = LabCoding::kOffset; break;
      default: Fail(path_, ": neither RGB, CMYK nor Lab (photometric interpretation ", colours, ")");
    }
    if (info_.lab != LabCoding::kUnknown) info_.space = &SpaceOf(CS_LAB);
    channels_ = info_.space->bits / 8;

    samples_ = file_.Number(TIFFTAG_SAMPLESPERPIXEL);
    const uint16_t bits = file_.Number(TIFFTAG_BITSPERSAMPLE);
    if (bits != 8) Fail(path_, ": ", bits, " bits per sample, only 8 are supported");
    if (samples_ < channels_) Fail(path_, ": ", samples_, " samples per pixel are too few for ", info_.space->name);
    CheckSize(path_, width, height, samples_ * 8);
    info_.width = static_cast<int32_t>(width);
    info_.height = static_cast<int32_t>(height);
    width_ = width;
  }

  // A unit is what libtiff decodes at once: a tile, or a strip as a tile of the image's width.
  void ReadUnits() {
    tiled_ = TIFFIsTiled(file_.get()) != 0;
    uint32_t width = static_cast<uint32_t>(width_), lines = 0;
    if (tiled_) {
      TIFFGetField(file_.get(), TIFFTAG_TILEWIDTH, &width);
      TIFFGetField(file_.get(), TIFFTAG_TILELENGTH, &lines);
    } else {
      TIFFGetFieldDefaulted(file_.get(), TIFFTAG_ROWSPERSTRIP, &lines);
      lines = std::min(lines, static_cast<uint32_t>(info_.height));
    }
    planes_ = file_.Number(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE ? channels_ : 1;
    unit_samples_ = planes_ == 1 ? samples_ : 1;
    CheckSize(path_, width, lines, static_cast<uint32_t>(samples_) * 8);
    unit_width_ = width;
    unit_lines_ = lines;
    const size_t unit_bytes = unit_width_ * unit_lines_ * unit_samples_;
    const auto expected = tiled_ ? TIFFTileSize64(file_.get()) : TIFFStripSize64(file_.get());
    if (expected != unit_bytes) Fail(path_, ": this arrangement of samples is not supported");
    CheckSize(path_, width_, unit_lines_, static_cast<uint32_t>(channels_) * 8);
    unit_.Allocate(unit_bytes);
    row_.Allocate(width_ * unit_lines_ * channels_);
  }

  void ReadResolution() {
    float x = 0, y = 0;
    TIFFGetField(file_.get(), TIFFTAG_XRESOLUTION, &x);
    TIFFGetField(file_.get(), TIFFTAG_YRESOLUTION, &y);
    const uint16_t unit = file_.Number(TIFFTAG_RESOLUTIONUNIT);
    if (unit == RESUNIT_NONE || !(x > 0) || !(y > 0)) return;
    const double per_inch = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
    info_.dpi_x = x * per_inch;
    info_.dpi_y = y * per_inch;
  }

  // The row of units that begins at a line, with its samples side by side.
  void ReadRowOfUnits(size_t first_line) {
    const size_t lines = std::min(unit_lines_, static_cast<size_t>(info_.height) - first_line);
    for (size_t x = 0; x < width_; x += unit_width_) {
      const size_t width = std::min(unit_width_, width_ - x);
      for (size_t plane = 0; plane < planes_; ++plane) {
        ReadUnit(static_cast<uint32_t>(x), static_cast<uint32_t>(first_line), static_cast<uint16_t>(plane), lines);
        for (size_t line = 0; line < lines; ++line) {
          const uint8_t* from = unit_.at(line * unit_width_ * unit_samples_);
          CopySamples(from, row_.at((line * width_ + x) * channels_) + plane, width);
        }
      }
    }
  }

  void ReadUnit(uint32_t x, uint32_t y, uint16_t plane, size_t lines) {
    TIFF* tiff = file_.get();
    const size_t bytes = unit_width_ * (tiled_ ? unit_lines_ : lines) * unit_samples_;
    const auto size = static_cast<tmsize_t>(bytes);
    const tmsize_t read = tiled_ ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, plane), unit_.at(0), size)
                                 : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, y, plane), unit_.at(0), size);
    if (read != size) file_.FailWithReason("too short");
  }

  void CopySamples(const uint8_t* from, uint8_t* to, size_t width) const {
    if (unit_samples_ == channels_) {
      std::memcpy(to, from, width * channels_);
      return;
    }
    const size_t count = planes_ == 1 ? channels_ : 1;
    for (; width > 0; --width, from += unit_samples_, to += channels_) std::memcpy(to, from, count);
  }

  std::string path_;
  TiffFile file_;
  bool tiled_ = false;
  size_t width_ = 0;
  size_t channels_ = 0;      // samples of the space
  uint16_t samples_ = 0;     // samples in the file
  size_t planes_ = 1;        // planes to read
  size_t unit_samples_ = 0;  // samples side by side in a unit
  size_t unit_width_ = 0, unit_lines_ = 0;
  size_t next_line_ = 0;
  Block unit_, row_;
};

}  // namespace

std::unique_ptr<ImageSource> OpenTiff(const std::string& path) { return std::make_unique<TiffSource>(path); }

}  // namespace client
