// The formulas of hue, word for word, one pixel at a time. Angles are worked out in long double.
#pragma once

#include <cstdint>

namespace qv_test {

void HsvFromRgb(const uint8_t* rgb, uint8_t* hsv);
void HsvToRgb(const uint8_t* hsv, uint8_t* rgb);
void HlsFromRgb(const uint8_t* rgb, uint8_t* hls);
bool HlsToRgb(const uint8_t* hls, uint8_t* rgb);  // false, and nothing written, for a grey pixel that has a hue
void HsiFromRgb(const uint8_t* rgb, uint8_t* hsi);
void HsiToRgb(const uint8_t* hsi, uint8_t* rgb);

}  // namespace qv_test
