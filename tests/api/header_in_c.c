/* The public header serves C99: the layouts of its records, and one conversion. */
#include <string.h>

#include "Qvclr15x.h"

int ConvertFromC(void);

typedef char SizeOfWhitePoint[sizeof(WhitePointParams) == 20 ? 1 : -1];
typedef char SizeOfCmyk[sizeof(CmykParams) == 12 ? 1 : -1];
typedef char SizeOfSpace1[sizeof(Space1Params) == 44 && offsetof(Space1Params, pLumaTable) == 24 ? 1 : -1];
typedef char SizeOfLab[sizeof(LabParams) == 32 ? 1 : -1];
typedef char SizeOfMemoryProfile[sizeof(IccMemoryProfile) == 16 && offsetof(IccMemoryProfile, pBytes) == 4 ? 1 : -1];
typedef char SizeOfParams[sizeof(ConversionParams) == 1648 && offsetof(ConversionParams, pCmykParams) == 1616 ? 1 : -1];
typedef char
    SizeOfParamsA[sizeof(ConversionParamsA) == 880 && offsetof(ConversionParamsA, pCmykParams) == 848 ? 1 : -1];
typedef char SizeOfBitmap[sizeof(BitmapHandle) == 32 && offsetof(BitmapHandle, pBits) == 24 ? 1 : -1];

int ConvertFromC(void) {
  const uint8_t pixel[3] = {10, 20, 30};
  const uint8_t expected[4] = {245, 235, 225, 39};
  uint8_t ink[4] = {0, 0, 0, 0};
  ColorConverter* converter = NULL;
  if (Q_ClrInit(&converter, CS_RGB, CS_CMYK, NULL) != SUCCESS) return 1;
  if (Q_ClrConvert(converter, pixel, ink, 1, 1, 0, 0) != SUCCESS) return 2;
  if (Q_ClrFree(converter) != SUCCESS) return 3;
  return memcmp(ink, expected, sizeof ink) == 0 ? 0 : 4;
}
