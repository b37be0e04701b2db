// TIFF files read by libtiff, through the library's own files.
#pragma once

#include <tiffio.h>

#include <memory>

#include "base/files.h"

namespace qv {

inline constexpr uint32_t kTiffIccTag = TIFFTAG_ICCPROFILE;  // 34675

struct TiffCloser {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

// An open file as libtiff sees it: its first directory is read, and nothing is ever printed. A call of the file that
// fails is remembered.
class TiffFile {
 public:
  explicit TiffFile(File& file) : file_(file) {}

  TiffHandle Open();  // null for what libtiff does not read
  bool Failed() const { return failed_; }

 private:
  struct Calls;
  File& file_;
  bool failed_ = false;
};

}  // namespace qv
