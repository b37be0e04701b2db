#include "IccSave/writers.h"
#include "ImageFile/copy_range.h"
#include "ImageFile/tiff_file.h"
#include "base/replacement.h"

namespace qv {
namespace {

bool SetTag(TIFF* tiff, std::span<const uint8_t> profile) {
  if (profile.empty()) return TIFFUnsetField(tiff, kTiffIccTag) == 1;
  return TIFFSetField(tiff, kTiffIccTag, static_cast<uint32_t>(profile.size()), profile.data()) == 1;
}

}  // namespace

Status WriteTiffProfile(const QWChar* name, std::span<const uint8_t> profile) {
  File source;
  int64_t size = 0;
  if (!source.Open(name, Disposition::kReadExisting) || !source.Seek(0, Origin::kEnd, &size)) return kFileAccess;
  Replacement made;
  if (!made.Open(name)) return kFileOpen;
  if (!CopyRange(source, 0, size, made.file()) || !source.Close()) return kFileWrite;
  TiffFile target(made.file());
  {
    const TiffHandle tiff = target.Open("r+");
    if (!tiff) return target.Failed() ? kFileWrite : kProfileData;
    if (!SetTag(tiff.get(), profile) || TIFFRewriteDirectory(tiff.get()) == 0) return kFileWrite;
  }
  return !target.Failed() && made.Commit() ? kSuccess : kFileWrite;
}

}  // namespace qv
