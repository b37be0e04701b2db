/* Windows only: lets the user choose how RGB becomes CMYK, then converts a pixel that way. */
#include <stdio.h>

#include "Qvclr15x.h"

int main(void) {
  WhitePointParams white = {.nWhitePoint = 50}; /* what the dialog may set; without them it leaves them out */
  CmykParams black = {.uStructSize = sizeof black, .nBlackParam = 175};
  ConversionParams params = {.uStructSize = sizeof params,
                             .nActiveMethod = METHOD_ICC,
                             .nMethodMask = METHOD_ICC,
                             .pWhitePoint = &white,
                             .pCmykParams = &black};
  uint32_t src = CS_RGB, dst = CS_CMYK;
  ColorConverter* converter = NULL;

  int32_t status = Q_ClrDlg(NULL, &converter, &src, &dst, &params);
  if (status == FAILURE) {
    puts("cancelled");
    return 0;
  }
  const uint8_t red[3] = {200, 30, 40}, swapped[3] = {40, 30, 200};
  uint8_t ink[4] = {0};
  if (status == SUCCESS) status = Q_ClrConvert(converter, src == CS_BGR ? swapped : red, ink, 1, 1, 0, 0);
  if (status == SUCCESS)
    printf("method %u: C %d M %d Y %d K %d\n", params.nActiveMethod, ink[0], ink[1], ink[2], ink[3]);
  if (converter) Q_ClrFree(converter);
  return status == SUCCESS ? 0 : 1;
}
