// Exported: records of profiles and their headers.
#include <algorithm>
#include <cstring>

#include "IccProfile/fixed_numbers.h"
#include "IccProfile/profile_record.h"
#include "IccProfile/tag_table.h"
#include "base/memory.h"

using namespace qv;

namespace {

constexpr uint32_t kClasses[] = {Signature("scnr"), Signature("mntr"), Signature("prtr"), Signature("link"),
                                 Signature("spac"), Signature("abst"), Signature("nmcl")};
constexpr uint32_t kSpaces[] = {
    Signature("XYZ "), Signature("Lab "), Signature("Luv "), Signature("YCbr"), Signature("Yxy "),
    Signature("RGB "), Signature("GRAY"), Signature("HSV "), Signature("HLS "), Signature("CMYK"),
    Signature("CMY "), Signature("2CLR"), Signature("3CLR"), Signature("4CLR"), Signature("5CLR"),
    Signature("6CLR"), Signature("7CLR"), Signature("8CLR"), Signature("9CLR"), Signature("ACLR"),
    Signature("BCLR"), Signature("CCLR"), Signature("DCLR"), Signature("ECLR"), Signature("FCLR")};
constexpr uint32_t kConnectionSpaces[] = {Signature("XYZ "), Signature("Lab ")};
constexpr uint32_t kPlatforms[] = {0, Signature("APPL"), Signature("MSFT"), Signature("SGI "), Signature("SUNW")};

bool IsOneOf(uint32_t value, std::span<const uint32_t> accepted) {
  return std::ranges::find(accepted, value) != accepted.end();
}

bool HasHeader(const IccProfileRecord* record) { return record && record->header; }

// `store` takes a value over into the header.
template <typename Store>
int32_t SetInHeader(const IccProfileRecord* record, Store&& store, bool accepted = true) {
  if (!HasHeader(record) || !accepted) return ERR_INV_PARAMETER;
  store(*record->header);
  return SUCCESS;
}

}  // namespace

extern "C" int32_t Q_InitICCProfile(IccProfileRecord* pProfile, uint32_t size) {
  if (!pProfile || size > sizeof *pProfile) return ERR_INV_PARAMETER;
  std::memset(pProfile, 0, size);
  pProfile->structSize = sizeof *pProfile;
  return SUCCESS;
}

extern "C" void Q_FreeICCProfile(IccProfileRecord* pProfile) {
  if (!pProfile) return;
  if (HasTags(*pProfile)) {
    Release(pProfile->tagTable);
    Release(pProfile->tagData);
    pProfile->tagTable = nullptr;
    pProfile->tagData = nullptr;
  }
  Release(pProfile->header);
  pProfile->header = nullptr;
  ReleaseImage(pProfile->profileBytes);
  pProfile->profileBytes = nullptr;
}

extern "C" int32_t Q_InitICCHeader(IccProfileRecord* pProfile) {
  if (!pProfile) return ERR_INV_PARAMETER;
  if (!pProfile->header) pProfile->header = New<IccHeader>().release();
  if (!pProfile->header) return ERR_FAILURE;
  *pProfile->header = {.profileSize = kTableBegin,
                       .version = 0x04200000,
                       .signature = Signature("acsp"),
                       .illuminant = {Fixed16FromDouble(0.9642), Fixed16FromDouble(1.0), Fixed16FromDouble(0.8249)}};
  return SUCCESS;
}

extern "C" uint32_t Q_GetICCTagTypeSig(const IccProfileRecord* pProfile, uint32_t tagSignature) {
  if (!pProfile) return 0;
  const IccTagEntry* entry = FindTag(*pProfile, tagSignature);
  ByteReader reader{{}};
  return entry && Ok(ReadTag(*pProfile, *entry, &reader)) ? static_cast<uint32_t>(reader.Big(4)) : 0;
}

extern "C" int32_t Q_SetICCCMMType(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(pProfile, [&](IccHeader& header) { header.cmmType = value; });
}
extern "C" int32_t Q_SetICCDeviceClass(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(
      pProfile, [&](IccHeader& header) { header.deviceClass = value; }, IsOneOf(value, kClasses));
}
extern "C" int32_t Q_SetICCColorSpace(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(
      pProfile, [&](IccHeader& header) { header.colorSpace = value; }, IsOneOf(value, kSpaces));
}
extern "C" int32_t Q_SetICCConnectionSpace(IccProfileRecord* pProfile, uint32_t value) {
  if (!HasHeader(pProfile) || pProfile->header->deviceClass == 0) return ERR_INV_PARAMETER;
  const bool link = pProfile->header->deviceClass == Signature("link");
  const bool accepted = link ? IsOneOf(value, kSpaces) : IsOneOf(value, kConnectionSpaces);
  return SetInHeader(
      pProfile, [&](IccHeader& header) { header.connectionSpace = value; }, accepted);
}
extern "C" int32_t Q_SetICCDateTime(IccProfileRecord* pProfile, const IccDateTime* pDateTime) {
  return SetInHeader(
      pProfile, [&](IccHeader& header) { header.dateTime = *pDateTime; }, pDateTime != nullptr);
}
extern "C" int32_t Q_SetICCPrimaryPlatform(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(
      pProfile, [&](IccHeader& header) { header.platform = value; }, IsOneOf(value, kPlatforms));
}
extern "C" int32_t Q_SetICCFlags(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(pProfile, [&](IccHeader& header) { header.flags = value % 4; });
}
extern "C" int32_t Q_SetICCDevManufacturer(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(pProfile, [&](IccHeader& header) { header.manufacturer = value; });
}
extern "C" int32_t Q_SetICCDevModel(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(pProfile, [&](IccHeader& header) { header.model = value; });
}
extern "C" int32_t Q_SetICCDeviceAttributes(IccProfileRecord* pProfile, uint64_t value) {
  return SetInHeader(pProfile, [&](IccHeader& header) { header.attributes = value & 15; });
}
extern "C" int32_t Q_SetICCRenderingIntent(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(
      pProfile, [&](IccHeader& header) { header.renderingIntent = value; }, value <= 3);
}
extern "C" int32_t Q_SetICCCreator(IccProfileRecord* pProfile, uint32_t value) {
  return SetInHeader(pProfile, [&](IccHeader& header) { header.creator = value; });
}
extern "C" int32_t Q_SetICCProfileId(IccProfileRecord* pProfile) {
  if (!pProfile) return ERR_INV_PARAMETER;
  ClearProfileId(pProfile);
  return SUCCESS;
}
