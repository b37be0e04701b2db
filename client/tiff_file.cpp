#include "tiff_file.h"

#include <cstdarg>
#include <cstdio>

#include "failure.h"
#include "files.h"
#include "image.h"

namespace client {
namespace {

// Both handlers return 1: libtiff's global ones, which print, are not called.
int KeepFirst(TIFF*, void* reason, const char*, const char* format, va_list values) {
  auto& text = *static_cast<std::string*>(reason);
  char line[500] = {};
  std::vsnprintf(line, sizeof line, format, values);
  if (text.empty()) text = line;
  return 1;
}

int Ignore(TIFF*, void*, const char*, const char*, va_list) { return 1; }

}  // namespace

TiffFile::TiffFile(const std::string& path, const char* mode) : path_(path) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMostImageBytes / 4);
  TIFFOpenOptionsSetErrorHandlerExtR(options, KeepFirst, &reason_);
  TIFFOpenOptionsSetWarningHandlerExtR(options, Ignore, nullptr);
  tiff_ = OpenNativeTiff(NativePath(path), mode, options);
  TIFFOpenOptionsFree(options);
  if (!tiff_) FailWithReason("cannot be opened");
}

TiffFile::~TiffFile() {
  if (tiff_) TIFFClose(tiff_);
}

uint16_t TiffFile::Number(uint32_t tag) const {
  uint16_t value = 0;
  TIFFGetFieldDefaulted(tiff_, tag, &value);
  return value;
}

void TiffFile::Close() {
  const bool flushed = TIFFFlush(tiff_) == 1;
  TIFFClose(tiff_);
  tiff_ = nullptr;
  if (!flushed || !reason_.empty()) FailWithReason("writing failed (is the disk full?)");
}

void TiffFile::FailWithReason(const char* otherwise) const { Fail(path_, ": ", reason_.empty() ? otherwise : reason_); }

}  // namespace client
