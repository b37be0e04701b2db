// Exported: the life of a converter.
#include <cstring>

#include "base/boundary.h"
#include "base/readable.h"
#include "qvclr/change.h"
#include "qvclr/create.h"
#include "qvclr/library.h"
#include "qvclr/params.h"

using namespace qv;

namespace {

// Of a readable record, which need not be aligned.
ConversionParams Widened(const ConversionParamsA* record) {
  ConversionParamsA narrow;
  std::memcpy(&narrow, record, sizeof narrow);
  ConversionParams wide;
  WidenParams(narrow, &wide);
  return wide;
}

}  // namespace

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
    const ConversionParams wide = Widened(pParams);
    return static_cast<Status>(Q_ClrInit(phConverter, nSrcSpace, nDstSpace, &wide));
  });
}

extern "C" int32_t Q_ClrSetConversionParams(ColorConverter* hConverter, const ConversionParams* pParams) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!hConverter || !pParams) return kInvalidParameter;
    if (!IsReadable(pParams, sizeof *pParams)) return kBadPointer;
    if (!IsReadable(hConverter, sizeof *hConverter)) return kBadPointer;
    if (const Status status = CheckLive(hConverter); !Ok(status)) return status;
    ConversionParams params;
    std::memcpy(&params, pParams, sizeof params);
    return ChangeConverter(params, hConverter);
  });
}

extern "C" int32_t Q_ClrSetConversionParamsA(ColorConverter* hConverter, const ConversionParamsA* pParams) {
  return AtBoundary(kNoMemory, [&]() -> Status {
    if (!hConverter || !pParams) return kInvalidParameter;
    if (!IsReadable(pParams, sizeof *pParams)) return kBadPointer;
    const ConversionParams wide = Widened(pParams);
    return static_cast<Status>(Q_ClrSetConversionParams(hConverter, &wide));
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

extern "C" void SetResModule(void* hModule) { UseResourcesOf(hModule); }
