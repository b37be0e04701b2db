// An open TIFF file. What libtiff complains about is kept for the failure that follows; its warnings are not shown.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace client {

// libtiff's own opening, by a name as the system takes it.
TIFF* OpenNativeTiff(const std::filesystem::path& path, const char* mode, TIFFOpenOptions* options);

class TiffFile {
 public:
  TiffFile(const std::string& path, const char* mode);
  ~TiffFile();
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  TIFF* get() const { return tiff_; }

  // The value of a tag, or what TIFF says it is when it is absent.
  uint16_t Number(uint32_t tag) const;

  // Sets a tag; a value that libtiff refuses fails.
  template <typename... Values>
  void Set(uint32_t tag, Values... values) {
    if (TIFFSetField(tiff_, tag, values...) != 1) FailWithReason("a tag cannot be set");
  }

  void Close();  // fails when anything went wrong before
  [[noreturn]] void FailWithReason(const char* otherwise) const;

 private:
  std::string path_;
  std::string reason_;  // the first error told by libtiff
  TIFF* tiff_ = nullptr;
};

}  // namespace client
