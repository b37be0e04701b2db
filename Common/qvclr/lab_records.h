// The two records of a converter with a Lab side: the constants of the conversion, then tables that are made from them.
#pragma once

#include <array>
#include <cstdint>

#include "Qvclr15x.h"

namespace qv {

struct LabConstants {
  std::array<double, 3> white;   // reference white X, Y, Z in the scale Y = 100
  std::array<double, 9> matrix;  // by rows
  int32_t l_offset, l_range, a_offset, a_range, b_offset, b_range;
};
static_assert(sizeof(LabConstants) == 120);

struct LabToRgbRecord {
  LabConstants constants;  // matrix from XYZ to linear RGB
  uint8_t tables[1088];
};
static_assert(sizeof(LabToRgbRecord) == 1208);

struct RgbToLabRecord {
  LabConstants constants;  // matrix from linear RGB to XYZ
  uint8_t tables[17440];
};
static_assert(sizeof(RgbToLabRecord) == 17560);

// sRGB primaries and D65 (single-precision values, widened), with the caller's coding of the samples.
LabConstants LabToRgbConstants(const LabParams& params);
LabConstants RgbToLabConstants(const LabParams& params);

}  // namespace qv
