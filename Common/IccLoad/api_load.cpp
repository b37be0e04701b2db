// Exported: profiles out of image files.
#include "IccLoad/profile_bytes.h"
#include "IccLoad/readers.h"
#include "ImageFile/image_format.h"
#include "base/boundary.h"
#include "base/memory.h"
#include "base/text.h"

using namespace qv;

namespace {

Status ReadProfile(ProfileCarrier carrier, File& file, IccProfileRecord* record) {
  switch (carrier) {
    case ProfileCarrier::kTiffTag: return ReadTiffProfile(file, record);
    case ProfileCarrier::kJpegMarkers: return ReadJpegProfile(file, record);
    case ProfileCarrier::kPostScriptHex: return ReadPostScriptProfile(file, record);
    case ProfileCarrier::kPictureComments: return ReadPictureProfile(file, record);
    default: return kFormatNotSupported;
  }
}

Status LoadProfile(const QWChar* name, IccProfileRecord* record) {
  File file;
  if (!file.Open(name, Disposition::kReadExisting)) return kFileAccess;
  ProfileCarrier carrier;
  if (const Status status = FindCarrier(file, &carrier); !Ok(status)) return status;
  const Status status = ReadProfile(carrier, file, record);
  TrimProfileBytes(record);
  return Ok(status) && !record->profileBytes ? kProfileNotFound : status;
}

}  // namespace

extern "C" int32_t Q_LoadICCProfile(const QWChar* pFileName, IccProfileRecord* pProfile, void* /*pLoadOptions*/) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pFileName || !pProfile) return kInvalidParameter;
    if (pProfile->structSize != sizeof *pProfile) return kInvalidStructSize;
    uint8_t* const bytes_before = pProfile->profileBytes;
    const uint64_t size_before = pProfile->profileByteSize;
    pProfile->profileBytes = nullptr;
    pProfile->profileByteSize = 0;
    const Status status = LoadProfile(pFileName, pProfile);
    if (status == kProfileNotFound) {
      pProfile->profileBytes = bytes_before;
      pProfile->profileByteSize = size_before;
    } else {
      ReleaseImage(bytes_before);
    }
    return status;
  });
}

extern "C" int32_t Q_LoadICCProfileA(const char* pFileName, IccProfileRecord* pProfile, void* pLoadOptions) {
  return WithWideName(pFileName, [&](const QWChar* name) { return Q_LoadICCProfile(name, pProfile, pLoadOptions); });
}
