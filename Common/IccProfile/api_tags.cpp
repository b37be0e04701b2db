// Exported: the tags of a profile.
#include "IccProfile/tag_codecs.h"
#include "IccProfile/tag_table.h"
#include "base/boundary.h"

using namespace qv;

namespace {

Status GetTag(const IccProfileRecord& record, uint32_t signature, void* tag) {
  const IccTagEntry* entry = FindTag(record, signature);
  if (!entry) return kIccTagNotFound;
  ByteReader reader{{}};
  if (const Status status = ReadTag(record, *entry, &reader); !Ok(status)) return status;
  const auto type = static_cast<uint32_t>(ByteReader(reader).Big(4));
  const Status status = DecodeTag(CodecFor(type), reader, tag);
  return Ok(status) ? StatusOfTag(signature, type) : status;
}

// The structure may lie in the record's own data: it is copied before the data moves.
Status SetTag(IccProfileRecord* record, const void* tag, uint32_t signature, uint32_t type) {
  if (!record->header) return kInvalidParameter;
  const TagCodec& codec = CodecFor(type);
  uint8_t copy[kLargestTagStructure];
  if (const Status status = ConstructTag(codec, type, tag, copy); !Ok(status)) return status;
  uint8_t* room = nullptr;
  const Status status = AppendTag(record, signature, EncodedBytes(codec, copy), &room);
  if (Ok(status)) EncodeTag(codec, copy, room);
  ReleaseTag(codec, copy);
  return Ok(status) ? StatusOfTag(signature, type) : status;
}

Status DeleteTag(IccProfileRecord* record, uint32_t signature, void* tag) {
  if (!record->header || !HasTags(*record)) return kInvalidParameter;
  IccTagEntry* entry = FindTag(*record, signature);
  if (!entry) return kIccTagNotFound;
  if (!LiesInside(*record, *entry)) return kInvalidProfile;
  if (tag) {
    if (const Status status = GetTag(*record, signature, tag); !Ok(status)) return status;
  }
  RemoveTag(record, entry);
  ClearProfileId(record);
  return kSuccess;
}

}  // namespace

extern "C" int32_t Q_GetICCTagData(const IccProfileRecord* pProfile, void* pTag, uint32_t tagSignature) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pProfile || !pTag) return kInvalidParameter;
    return GetTag(*pProfile, tagSignature, pTag);
  });
}

extern "C" int32_t Q_SetICCTagData(IccProfileRecord* pProfile, const void* pTag, uint32_t tagSignature,
                                   uint32_t typeSignature) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pProfile || !pTag) return kInvalidParameter;
    return SetTag(pProfile, pTag, tagSignature, typeSignature);
  });
}

extern "C" int32_t Q_CreateICCTagData(void* pDst, const void* pSrc, uint32_t typeSignature) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pDst || !pSrc) return kInvalidParameter;
    const Status status = ConstructTag(CodecFor(typeSignature), typeSignature, pSrc, pDst);
    return Ok(status) && !FindCodec(typeSignature) ? kUnknownTagType : status;
  });
}

extern "C" void Q_FreeICCTagType(void* pTag, uint32_t typeSignature) {
  if (pTag) ReleaseTag(CodecFor(typeSignature), pTag);
}

extern "C" int32_t Q_DeleteICCTag(IccProfileRecord* pProfile, uint32_t tagSignature, void* pTag) {
  return AtBoundary(kFailure, [&]() -> Status {
    if (!pProfile) return kInvalidParameter;
    return DeleteTag(pProfile, tagSignature, pTag);
  });
}
