#include "IccLoad/profile_bytes.h"
#include "IccLoad/readers.h"
#include "ImageFile/tiff_file.h"

namespace qv {

Status ReadTiffProfile(File& file, IccProfileRecord* record) {
  TiffFile source(file);
  const TiffHandle tiff = source.Open();
  if (!tiff) return kProfileData;
  uint32_t count = 0;
  const void* bytes = nullptr;
  if (TIFFGetField(tiff.get(), kTiffIccTag, &count, &bytes) == 0 || count == 0) {
    return source.Failed() ? kProfileData : kProfileNotFound;
  }
  return AppendProfileBytes(record, bytes, count);
}

}  // namespace qv
