// JPEG: grey and YCbCr files are read as RGB, YCCK as CMYK.
#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
// jerror.h needs jpeglib.h before it.
#include <jerror.h>

#include <csetjmp>

#include "failure.h"
#include "files.h"
#include "image.h"

namespace client {
namespace {

constexpr int kDotsPerInch = 1, kDotsPerCentimetre = 2;  // density units of JFIF

// A Huffman-coded file spends a bit or more on each block of 64 samples of its largest component.
constexpr uint64_t kMostPixelsPerByte = 8 * 64;

// libjpeg's errors must not return and must not be thrown through it, so they jump.
struct ErrorManager : jpeg_error_mgr {
  std::jmp_buf jump;
  char text[JMSG_LENGTH_MAX];
};

[[noreturn]] void Jump(j_common_ptr codec) {
  auto* errors = static_cast<ErrorManager*>(codec->err);
  errors->format_message(codec, errors->text);
  std::longjmp(errors->jump, 1);  // NOLINT(cert-err52-cpp): see ErrorManager
}

// Warnings about pixels that were made up count as errors.
void CheckWarning(j_common_ptr codec, int level) {
  const int code = codec->err->msg_code;
  if (level < 0 && (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE)) Jump(codec);
}

class JpegSource : public ImageSource {
 public:
  explicit JpegSource(const std::string& path) : path_(path), content_(ReadFile(path)) {
    codec_.err = jpeg_std_error(&errors_);
    errors_.error_exit = Jump;
    errors_.emit_message = CheckWarning;
    try {
      Guarded([this] {
        jpeg_create_decompress(&codec_);
        jpeg_mem_src(&codec_, content_.data(), static_cast<unsigned long>(content_.size()));
        jpeg_read_header(&codec_, TRUE);
      });
      ReadLayout();
      Guarded([this] { jpeg_start_decompress(&codec_); });
    } catch (...) {
      jpeg_destroy_decompress(&codec_);
      throw;
    }
  }

  ~JpegSource() override { jpeg_destroy_decompress(&codec_); }

  void ReadLines(uint8_t* to, int32_t lines) override {
    Guarded([this, to, lines] {
      JSAMPROW line = to;
      for (int32_t i = 0; i < lines; ++i, line += static_cast<size_t>(info_.width) * channels_) {
        jpeg_read_scanlines(&codec_, &line, 1);
      }
    });
    // Adobe's files store CMYK inverted: 255 is no ink.
    if (channels_ == 4 && codec_.saw_Adobe_marker) {
      const size_t bytes = FrameBytes(*info_.space, info_.width, lines);
      for (size_t i = 0; i < bytes; ++i) to[i] = static_cast<uint8_t>(255 - to[i]);
    }
  }

 private:
  // Runs calls of libjpeg; they hold nothing that a jump would have to release.
  template <typename Calls>
  void Guarded(Calls calls) {
    // NOLINTNEXTLINE(cert-err52-cpp): see ErrorManager
    if (setjmp(errors_.jump)) Fail(path_, ": ", errors_.text);
    calls();
  }

  void ReadLayout() {
    const bool cmyk = codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK;
    codec_.out_color_space = cmyk ? JCS_CMYK : JCS_RGB;
    channels_ = cmyk ? 4 : 3;
    info_.space = &SpaceOf(cmyk ? CS_CMYK : CS_RGB);
    CheckSize(path_, codec_.image_width, codec_.image_height, info_.space->bits);
    if (uint64_t{codec_.image_width} * codec_.image_height / kMostPixelsPerByte > content_.size()) {
      Fail(path_, ": too short for ", codec_.image_width, " x ", codec_.image_height, " pixels");
    }
    info_.width = static_cast<int32_t>(codec_.image_width);
    info_.height = static_cast<int32_t>(codec_.image_height);
    const int unit = codec_.density_unit;
    if (unit == kDotsPerInch || unit == kDotsPerCentimetre) {
      const double per_inch = unit == kDotsPerCentimetre ? kCentimetresPerInch : 1;
      info_.dpi_x = codec_.X_density * per_inch;
      info_.dpi_y = codec_.Y_density * per_inch;
    }
  }

  std::string path_;
  std::vector<uint8_t> content_;
  ErrorManager errors_{};
  jpeg_decompress_struct codec_{};
  size_t channels_ = 0;
};

}  // namespace

std::unique_ptr<ImageSource> OpenJpeg(const std::string& path) { return std::make_unique<JpegSource>(path); }

}  // namespace client
