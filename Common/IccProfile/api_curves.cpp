// Exported: curves and lookup tables as bytes.
#include <cstring>

#include "IccProfile/profile_record.h"
#include "IccProfile/tags/tags.h"
#include "base/boundary.h"

using namespace qv;

extern "C" int32_t Q_GetParametricCurveNumberOfParameters(uint32_t functionType) {
  return static_cast<int32_t>(ParametersOf(functionType));
}

// The signature tells in which order the structure is.
extern "C" int32_t Q_ConvertCurveTypeToBuffer(void* pBuffer, const IccCurveTagType* pCurve) {
  if (!pBuffer || !pCurve) return ERR_INV_PARAMETER;
  const uint32_t stored = pCurve->entryCount;
  const bool host_order = pCurve->typeSignature == Signature("curv");
  const uint32_t count =
      host_order ? stored
                 : static_cast<uint32_t>(BigEndian({reinterpret_cast<const uint8_t*>(&stored), sizeof stored}));
  ByteWriter writer(static_cast<uint8_t*>(pBuffer));
  writer.Copy(pCurve, offsetof(IccCurveTagType, entries));
  writer.Copy(pCurve->entries, size_t{2} * count);
  return SUCCESS;
}

// The function type is taken as it stands, so that of a structure in file order only the head is copied: intended.
extern "C" int32_t Q_ConvertParametricCurveTypeToBuffer(void* pBuffer, const IccParametricCurveTagType* pCurve) {
  if (!pBuffer || !pCurve) return ERR_INV_PARAMETER;
  ByteWriter writer(static_cast<uint8_t*>(pBuffer));
  writer.Copy(pCurve, offsetof(IccParametricCurveTagType, parameters));
  writer.Copy(pCurve->parameters, size_t{4} * ParametersOf(pCurve->functionType));
  return SUCCESS;
}

extern "C" int32_t Q_ConvertCLUTToBuffer(void* pBuffer, const IccClut* pClut) {
  if (!pBuffer || !pClut) return ERR_INV_PARAMETER;
  ByteWriter writer(static_cast<uint8_t*>(pBuffer));
  writer.Copy(pClut, offsetof(IccClut, elementCount));
  writer.Copy(pClut->elements, size_t{pClut->elementCount} * (pClut->precision == 2 ? 2 : 1));
  return SUCCESS;
}
