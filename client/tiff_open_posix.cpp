#include "tiff_file.h"

namespace client {

TIFF* OpenNativeTiff(const std::filesystem::path& path, const char* mode, TIFFOpenOptions* options) {
  return TIFFOpenExt(path.c_str(), mode, options);
}

}  // namespace client
