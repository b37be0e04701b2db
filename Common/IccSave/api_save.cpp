// Exported: profiles into image files.
#include "IccSave/writers.h"
#include "ImageFile/image_format.h"
#include "base/boundary.h"
#include "base/memory.h"
#include "base/text.h"

using namespace qv;

namespace {

Status SaveProfile(const QWChar* name, std::span<const uint8_t> profile) {
  ProfileCarrier carrier;
  {
    File file;
    if (!file.Open(name, Disposition::kReadExisting)) return kFileAccess;
    if (const Status status = FindCarrier(file, &carrier); !Ok(status)) return status;
  }
  switch (carrier) {
    case ProfileCarrier::kTiffTag: return WriteTiffProfile(name, profile);
    case ProfileCarrier::kJpegMarkers: return WriteJpegProfile(name, profile);
    case ProfileCarrier::kGifExtension: return WriteGifProfile(name, profile);
    default: return kFormatNotSupported;
  }
}

}  // namespace

extern "C" int32_t Q_SaveICCProfile(const QWChar* pFileName, IccProfileRecord* pProfile, void* /*pSaveOptions*/) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pFileName || !pProfile) return kInvalidParameter;
    if (pProfile->structSize != sizeof *pProfile) return kInvalidStructSize;
    const uint64_t bytes = pProfile->profileByteSize;
    if (bytes > UINT32_MAX || bytes > BytesOf(pProfile->profileBytes)) return kInvalidProfile;
    return SaveProfile(pFileName, {pProfile->profileBytes, static_cast<size_t>(bytes)});
  });
}

extern "C" int32_t Q_SaveICCProfileA(const char* pFileName, IccProfileRecord* pProfile, void* pSaveOptions) {
  return WithWideName(pFileName, [&](const QWChar* name) { return Q_SaveICCProfile(name, pProfile, pSaveOptions); });
}
