/* Converts a few RGB pixels to CMYK through the library's own ICC profiles. */
#include <stdio.h>

#include "Qvclr15x.h"

int main(void) {
  static const uint8_t rgb[3][3] = {{255, 255, 255}, {200, 30, 40}, {0, 0, 0}};
  uint8_t cmyk[3][4] = {{0}};

  ConversionParams params = {.uStructSize = sizeof params, .nActiveMethod = METHOD_ICC, .nMethodMask = METHOD_ICC};
  ColorConverter* converter = NULL;
  int32_t status = Q_ClrInit(&converter, CS_RGB, CS_CMYK, &params);
  if (status == SUCCESS) status = Q_ClrConvert(converter, rgb, cmyk, 3, 1, 0, 0); /* 3 x 1 pixels, no padding */
  for (int i = 0; i < 3 && status == SUCCESS; ++i) {
    printf("R %3d  G %3d  B %3d   ->   ", rgb[i][0], rgb[i][1], rgb[i][2]);
    printf("C %3d  M %3d  Y %3d  K %3d\n", cmyk[i][0], cmyk[i][1], cmyk[i][2], cmyk[i][3]);
  }
  if (converter) Q_ClrFree(converter);
  return status == SUCCESS ? 0 : 1;
}
