// The CIE formulas, word for word, one pixel at a time. Powers and roots are those of long double.
#pragma once

#include <cstdint>

namespace qv_test {

void XyzFromRgb(const uint8_t* rgb, uint8_t* xyz);
void XyzToRgb(const uint8_t* xyz, uint8_t* rgb);
void LabFromRgb(const uint8_t* rgb, uint8_t* lab);
void LabToRgb(const uint8_t* lab, uint8_t* rgb);

}  // namespace qv_test
