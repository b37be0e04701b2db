// The CMYK formulas, word for word, one pixel at a time.
#pragma once

#include <array>
#include <cstdint>

namespace qv_test {

class CmykModel {
 public:
  explicit CmykModel(int32_t param);  // black generation in thousandths
  void FromRgb(const uint8_t* rgb, uint8_t* cmyk) const;
  void ToRgb(const uint8_t* cmyk, uint8_t* rgb) const;

 private:
  // What depends on few bytes is worked out once: all pixels of all parameters are to be gone through.
  std::array<int32_t, 256> black_{}, grey_weight_{};
  std::array<std::array<int32_t, 256>, 256> removal_{};  // by the smallest complement and the largest
  int16_t factor_;
};

}  // namespace qv_test
