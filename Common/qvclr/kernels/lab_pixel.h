// CS_LAB by formula: sRGB primaries, D65, and a display gamma of 1 / 0.45. Without settings L* is truncated and stored
// as L* x 255 / 100, a* and b* are truncated signed bytes. A converter with settings of its own (RowArgs::record, a
// record of lab_records.h) codes by its offsets and ranges, and rounds.
#pragma once

#include <algorithm>
#include <array>
#include <span>

#include "qvclr/kernels/pixel.h"
#include "qvclr/lab_records.h"

namespace qv::lab {

constexpr uint32_t kPlainGamma = 45;

struct Triple {
  double x, y, z;
};
inline Triple Multiply(const std::array<double, 9>& m, const Triple& v) {
  return {m[0] * v.x + m[1] * v.y + m[2] * v.z, m[3] * v.x + m[4] * v.y + m[5] * v.z,
          m[6] * v.x + m[7] * v.y + m[8] * v.z};
}

struct Lab {
  double l, a, b;
};

inline const RgbToLabRecord& PlainFromRgb() {
  static const RgbToLabRecord record = [] {
    RgbToLabRecord made{.constants = RgbToLabConstants({})};
    BuildTables(made, kPlainGamma);
    return made;
  }();
  return record;
}

// XYZ of a pixel relative to the white.
inline Triple RelativeXyz(const Rgb& rgb, const RgbToLabRecord& record) {
  const auto linear = [&](int channel) { return record.linear[static_cast<size_t>(channel)]; };
  const auto& white = record.constants.white;
  const Triple xyz = Multiply(record.constants.matrix, {linear(rgb.r), linear(rgb.g), linear(rgb.b)});
  return {xyz.x * 100 / white[0], xyz.y * 100 / white[1], xyz.z * 100 / white[2]};
}

template <typename Curve>
inline Lab LabFromRelativeXyz(const Triple& xyz, Curve&& curve) {
  const double fx = curve(xyz.x), fy = curve(xyz.y), fz = curve(xyz.z);
  return {116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)};
}

inline void RGBToPlainLab(const Rgb& rgb, uint8_t* dst) {
  const Lab lab = LabFromRelativeXyz(RelativeXyz(rgb, PlainFromRgb()), LabCurve);
  dst[0] = static_cast<uint8_t>(TruncateToInt32(lab.l) * 255 / 100);
  dst[1] = LowByte(lab.a);
  dst[2] = LowByte(lab.b);
}

// Between the entries of the record's table; within a fiftieth of a step of the curve itself.
inline double TabledLabCurve(double t, const RgbToLabRecord& record) {
  const double at = t * kLabCurveSteps;
  const auto below = std::min(static_cast<size_t>(at), record.lab_curve.size() - 2);
  const double first = record.lab_curve[below], second = record.lab_curve[below + 1];
  return first + (second - first) * (at - static_cast<double>(below));
}

inline uint8_t Coded(double value, int32_t offset, int32_t range) {
  return ClampedByte(value * 255 / range + offset + 0.5);
}

inline void RGBToLabByRecord(const Rgb& rgb, const RgbToLabRecord& record, uint8_t* dst) {
  const Lab lab = LabFromRelativeXyz(RelativeXyz(rgb, record), [&](double t) { return TabledLabCurve(t, record); });
  const LabConstants& coding = record.constants;
  dst[0] = Coded(lab.l, coding.l_offset, coding.l_range);
  dst[1] = Coded(lab.a, coding.a_offset, coding.a_range);
  dst[2] = Coded(lab.b, coding.b_offset, coding.b_range);
}

inline void RGBToLabPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto* record = static_cast<const RgbToLabRecord*>(args.record);
  const Rgb rgb = LoadRgb(src, args);
  record ? RGBToLabByRecord(rgb, *record, dst) : RGBToPlainLab(rgb, dst);
}

// Where the bytes of linear values begin: value^0.45 x 255 rounded to nearest is the number of these up to the value.
inline const std::array<double, 255>& ByteBegins() {
  static const auto begins = [] {
    std::array<double, 255> made{};
    for (size_t i = 0; i < made.size(); ++i) made[i] = BeginOfByte(i + 1, kPlainGamma);
    return made;
  }();
  return begins;
}

// The middle of what the forward formula truncates to the bytes: that shortens the way back to about half. Black and
// white are exact.
inline Lab MiddleOfBytes(const uint8_t* src) {
  const auto middle = [](int truncated) {
    return truncated > 0 ? truncated + 0.5 : truncated < 0 ? truncated - 0.5 : 0;
  };
  const int whole_l = (src[0] * 100 + 254) / 255;  // the L* that was stored as this byte
  const bool an_end = whole_l == 0 || whole_l == 100;
  return {an_end ? whole_l : whole_l + 0.5, middle(Signed(src[1])), middle(Signed(src[2]))};
}

inline Lab Decoded(const uint8_t* src, const LabConstants& coding) {
  const auto value = [](int byte, int32_t offset, int32_t range) {
    return (static_cast<double>(byte) - offset) * range / 255;
  };
  return {value(src[0], coding.l_offset, coding.l_range), value(src[1], coding.a_offset, coding.a_range),
          value(src[2], coding.b_offset, coding.b_range)};
}

// How many of the begins do not exceed the value: the byte. A bisection without branches.
template <typename Begin>
int CountUpTo(double value, std::span<const Begin, 255> begins) {
  const Begin* reached = begins.data();
  for (size_t step = 128; step > 0; step /= 2) reached += step * static_cast<size_t>(reached[step - 1] <= value);
  return static_cast<int>(reached - begins.data());
}

template <typename Begin>
inline Rgb RgbFromLab(const Lab& lab, const LabConstants& constants, std::span<const Begin, 255> begins) {
  const auto& white = constants.white;
  const double fy = (lab.l + 16) / 116;
  const Triple linear = Multiply(
      constants.matrix, {InverseLabCurve(fy + lab.a / 500) * white[0] / 100, InverseLabCurve(fy) * white[1] / 100,
                         InverseLabCurve(fy - lab.b / 200) * white[2] / 100});
  const auto byte = [&](double value) { return CountUpTo(value, begins); };
  return {byte(linear.x), byte(linear.y), byte(linear.z)};
}

inline const LabConstants& PlainToRgb() {
  static const LabConstants plain = LabToRgbConstants({});
  return plain;
}

inline void LabToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const auto* record = static_cast<const LabToRgbRecord*>(args.record);
  StoreRgb(record ? RgbFromLab<float>(Decoded(src, record->constants), record->constants, record->byte_begins)
                  : RgbFromLab<double>(MiddleOfBytes(src), PlainToRgb(), ByteBegins()),
           dst, args);
}

}  // namespace qv::lab
