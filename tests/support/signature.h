// Signatures of ICC profiles as the numbers that they are.
#pragma once

#include <cstdint>

namespace qv_test {

constexpr uint32_t Sig(const char* text) {
  uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number * 256 + static_cast<uint8_t>(text[i]);
  return number;
}

}  // namespace qv_test
