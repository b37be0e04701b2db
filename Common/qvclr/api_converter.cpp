// Exported: the life of a converter.
#include <cstring>

#include "base/boundary.h"
#include "base/readable.h"
#include "qvclr/create.h"
#include "qvclr/library.h"
#include "qvclr/params.h"

using namespace qv;

extern "C" int32_t Q_ClrInit(ColorConverter** phConverter, uint32_t nSrcSpace, uint32_t nDstSpace,
                             const ConversionParams* pParams) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!phConverter) return kInvalidParameter;
    if (!IsWritable(phConverter, sizeof *phConverter)) return kBadPointer;
    ConversionParams params;
    if (pParams && !IsReadable(pParams, sizeof params)) return kBadPointer;
    if (pParams) std::memcpy(&params, pParams, sizeof params);

    ColorConverter* handle = nullptr;
    const Status status = CreateConverter(nSrcSpace, nDstSpace, pParams ? &params : nullptr, &handle);
    if (Ok(status)) std::memcpy(phConverter, &handle, sizeof handle);
    return status;
  });
}

extern "C" int32_t Q_ClrInitA(ColorConverter** phConverter, uint32_t nSrcSpace, uint32_t nDstSpace,
                              const ConversionParamsA* pParams) {
  if (!pParams) return Q_ClrInit(phConverter, nSrcSpace, nDstSpace, nullptr);
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!phConverter) return kInvalidParameter;
    if (!IsReadable(pParams, sizeof *pParams)) return kBadPointer;
    ConversionParamsA narrow;
    std::memcpy(&narrow, pParams, sizeof narrow);
    ConversionParams wide;
    WidenParams(narrow, &wide);
    return static_cast<Status>(Q_ClrInit(phConverter, nSrcSpace, nDstSpace, &wide));
  });
}

extern "C" int32_t Q_ClrFree(ColorConverter* hConverter) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!hConverter || !IsReadable(hConverter, sizeof *hConverter)) return kInvalidParameter;
    return FreeConverter(hConverter);
  });
}

extern "C" int32_t Q_ClrIsValid(const ColorConverter* hConverter) {
  return AtBoundary(kNoMemory, [&] { return CheckLive(hConverter); });
}

extern "C" void SetResModule(void* hModule) { TheLibrary().resource_module.store(hModule); }
