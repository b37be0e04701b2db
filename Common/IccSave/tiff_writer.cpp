#include "IccSave/writers.h"
#include "ImageFile/copy_range.h"
#include "ImageFile/tiff_directory.h"
#include "ImageFile/tiff_file.h"
#include "base/replacement.h"

namespace qv {

Status WriteTiffProfile(const QWChar* name, std::span<const uint8_t> profile) {
  File source;
  int64_t size = 0;
  if (!source.Open(name, Disposition::kReadExisting) || !source.Seek(0, Origin::kEnd, &size)) return kFileAccess;
  if (TiffFile file(source); !file.Open() || file.Failed()) return kProfileData;
  TiffDirectory directory;
  if (const Status status = directory.Read(source); !Ok(status)) return status;
  Replacement made;
  if (!made.Open(name)) return kFileOpen;
  if (!CopyRange(source, 0, size, made.file()) || !source.Close()) return kFileWrite;
  if (const Status status = directory.WriteWith(kTiffIccTag, profile, made.file()); !Ok(status)) return status;
  return made.Commit() ? kSuccess : kFileWrite;
}

}  // namespace qv
