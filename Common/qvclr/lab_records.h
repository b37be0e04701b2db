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
  LabConstants constants;              // matrix from XYZ to linear RGB
  std::array<float, 255> byte_begins;  // the byte of a linear value is the number of these that do not exceed it
  uint8_t unused[68];
};
static_assert(sizeof(LabToRgbRecord) == 1208);

struct RgbToLabRecord {
  LabConstants constants;              // matrix from linear RGB to XYZ
  std::array<double, 256> linear;      // of a byte
  std::array<double, 1924> lab_curve;  // f(t) at t = i / kLabCurveSteps
};
static_assert(sizeof(RgbToLabRecord) == 17560);
inline constexpr double kLabCurveSteps = 1740;  // the table reaches t = 1.105; quotients of RGB stay below 1.002

// f of CIE 15, with the constants of this library's Lab formulas.
inline constexpr double kLinearBelow = 0.008856, kSlope = 7.7867, kIntercept = 0.13793103448275862;  // 16 / 116
double LabCurve(double t);
double InverseLabCurve(double f);

// The constants for sRGB primaries and D65 (single-precision values, widened) with the caller's coding of the samples;
// a range of 0 or below means the field's default.
LabConstants LabToRgbConstants(const LabParams& params);
LabConstants RgbToLabConstants(const LabParams& params);

// What a change of a converter without a record starts from: another white and its own matrix, single-precision values.
LabConstants ChangedLabToRgbConstants();
// Takes over the values that the flags of `change` select.
void ChangeLabCoding(const LabParams& change, LabConstants* constants);

// The least linear value that becomes the byte (1..255); `gamma` is in hundredths.
double BeginOfByte(size_t byte, uint32_t gamma);

// Make the tables of a record whose constants are filled.
void BuildTables(LabToRgbRecord& record, uint32_t gamma);
void BuildTables(RgbToLabRecord& record, uint32_t gamma);

}  // namespace qv
