// Exported: profiles as bytes and as files.
#include "IccProfile/byte_image.h"
#include "base/boundary.h"
#include "base/bytes.h"
#include "base/files.h"
#include "base/memory.h"
#include "base/text.h"

using namespace qv;

namespace {

Status ReadNumber(File& file, uint32_t* number) {
  uint8_t bytes[4];
  size_t taken = 0;
  if (!file.Read(bytes, sizeof bytes, &taken) || taken != sizeof bytes) return kFileRead;
  *number = static_cast<uint32_t>(BigEndian(bytes));
  return kSuccess;
}

Status FillFromFile(File& file, IccProfileRecord* record) {
  uint32_t size = 0, version = 0;
  if (const Status status = ReadNumber(file, &size); !Ok(status)) return status;
  if (size == 0) return kInvalidProfile;
  if (!file.Seek(4, Origin::kCurrent)) return kFileRead;
  if (const Status status = ReadNumber(file, &version); !Ok(status)) return status;
  if (!file.Seek(0, Origin::kStart)) return kFileRead;
  const auto buffer = NewArray<uint8_t>(size);
  if (!buffer) return kFailure;
  size_t taken = 0;  // less than was declared is no failure: intended
  if (!file.Read(buffer.get(), size, &taken)) return kFileRead;
  const bool parsed = version == 0x04000000 || version == 0x04200000;
  return parsed ? FillFromBytes(record, {buffer.get(), taken}, size) : FillOpaque(record, {buffer.get(), taken}, size);
}

}  // namespace

extern "C" int32_t Q_FillICCProfileStructure(IccProfileRecord* pProfile, const void* pBytes, uint32_t length) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pProfile || !pBytes || length == 0) return kInvalidParameter;
    return FillFromBytes(pProfile, {static_cast<const uint8_t*>(pBytes), length}, length);
  });
}

extern "C" int32_t Q_FillICCProfileFromICCFile(const QWChar* pFileName, IccProfileRecord* pProfile) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pFileName || !pProfile) return kInvalidParameter;
    File file;
    if (!file.Open(pFileName, Disposition::kReadExisting)) return kFileOpen;
    return FillFromFile(file, pProfile);
  });
}

extern "C" int32_t Q_FillICCProfileFromICCFileA(const char* pFileName, IccProfileRecord* pProfile) {
  return WithWideName(pFileName, [&](const QWChar* name) { return Q_FillICCProfileFromICCFile(name, pProfile); });
}

extern "C" int32_t Q_GenerateICCPointer(IccProfileRecord* pProfile) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pProfile) return kInvalidParameter;
    return GenerateImage(pProfile);
  });
}

extern "C" int32_t Q_GenerateICCFile(IccProfileRecord* pProfile, const QWChar* pFileName) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pProfile || !pFileName) return kInvalidParameter;
    const size_t bytes = pProfile->profileByteSize;
    if (bytes > BytesOf(pProfile->profileBytes)) return kInvalidProfile;
    File file;
    if (!file.Open(pFileName, Disposition::kCreateAlways)) return kFileOpen;
    return file.Write(pProfile->profileBytes, bytes) && file.Close() ? kSuccess : kFileWrite;
  });
}

extern "C" int32_t Q_GenerateICCFileA(IccProfileRecord* pProfile, const char* pFileName) {
  return WithWideName(pFileName, [&](const QWChar* name) { return Q_GenerateICCFile(pProfile, name); });
}
