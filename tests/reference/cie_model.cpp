#include "reference/cie_model.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qv_test {
namespace {

constexpr double kWhiteX = 95.0166015625, kWhiteZ = 108.76499938964844, kBend = 0.008856, kSlope = 7.7867;
constexpr double kFoot = 0.13793103448275862;

uint8_t LowByte(double value) { return static_cast<uint8_t>(static_cast<int32_t>(value)); }
uint8_t TruncatedThenClamped(double value) {
  return static_cast<uint8_t>(std::clamp(static_cast<int32_t>(value), 0, 255));
}

// A root of double precision, mended by one step of Newton's method in long double.
double CubeRoot(double t) {
  const long double near = std::cbrt(t);
  return static_cast<double>(near - (near * near * near - t) / (3 * near * near));
}

double F(double t) { return t > kBend ? CubeRoot(t) : kSlope * t + kFoot; }
double InverseF(double f) {
  const double cube = f * f * f;
  return cube > kBend ? cube : (f - kFoot) / kSlope;
}

std::array<double, 256> LinearValues() {
  std::array<double, 256> linear{};
  const double exponent = 1 / (45 / 100.0);
  for (size_t i = 0; i < 256; ++i) {
    linear[i] = static_cast<double>(
        std::pow(static_cast<long double>(static_cast<double>(i) / 255), static_cast<long double>(exponent)));
  }
  return linear;
}

// Entry i: the linear value whose 0.45th power times 255 is i + 0.5, above which i + 1 is nearer.
std::array<long double, 255> RoundingLimits() {
  std::array<long double, 255> limits{};
  const auto exponent = static_cast<long double>(0.45);
  for (size_t i = 0; i < 255; ++i) limits[i] = std::pow((static_cast<long double>(i) + 0.5L) / 255, 1 / exponent);
  return limits;
}
uint8_t GammaCoded(double linear) {
  static const std::array<long double, 255> kLimits = RoundingLimits();
  return static_cast<uint8_t>(std::ranges::upper_bound(kLimits, static_cast<long double>(linear)) - kLimits.begin());
}

// Where the truncated values that are stored as this byte have their middle.
double MiddleOfLightness(uint8_t byte) {
  const int32_t stored = (byte * 100 + 254) / 255;  // the whole L* of which 255/100, truncated, is the byte
  return stored == 0 || stored == 100 ? stored : stored + 0.5;
}
double MiddleOfChroma(uint8_t byte) {
  const auto stored = static_cast<int8_t>(byte);
  return stored > 0 ? stored + 0.5 : stored < 0 ? stored - 0.5 : 0.0;
}

}  // namespace

void XyzFromRgb(const uint8_t* rgb, uint8_t* xyz) {
  const double r = rgb[0], g = rgb[1], b = rgb[2];
  xyz[0] = LowByte(0.63267 * r + 0.228457 * g + 0.0 * b);
  xyz[1] = LowByte(0.204556 * r + 0.737352 * g + 0.00951424 * b);
  xyz[2] = LowByte(0.126995 * r + 0.0341908 * g + 0.815696 * b);
}

void XyzToRgb(const uint8_t* xyz, uint8_t* rgb) {
  const double x = xyz[0], y = xyz[1], z = xyz[2];
  rgb[0] = TruncatedThenClamped(1.75526 * x - 0.544134 * y + 0.00634681 * z);
  rgb[1] = TruncatedThenClamped(-0.483679 * x + 1.50688 * y - 0.0175762 * z);
  rgb[2] = TruncatedThenClamped(-0.253 * x + 0.0215528 * y + 1.2257 * z);
}

void LabFromRgb(const uint8_t* rgb, uint8_t* lab) {
  static const std::array<double, 256> kLinear = LinearValues();
  const double r = kLinear[rgb[0]], g = kLinear[rgb[1]], b = kLinear[rgb[2]];
  const double fy = F((0.21267099678516388 * r + 0.7151600122451782 * g + 0.0721689984202385 * b) * 100 / 100);
  const double fx = F((0.4124529957771301 * r + 0.3575800061225891 * g + 0.18042300641536713 * b) * 100 / kWhiteX);
  const double fz = F((0.01933399960398674 * r + 0.11919300258159637 * g + 0.9502270221710205 * b) * 100 / kWhiteZ);
  lab[0] = static_cast<uint8_t>(static_cast<int32_t>(116 * fy - 16) * 255 / 100);
  lab[1] = LowByte(500 * (fx - fy));
  lab[2] = LowByte(200 * (fy - fz));
}

void LabToRgb(const uint8_t* lab, uint8_t* rgb) {
  const double fy = (MiddleOfLightness(lab[0]) + 16) / 116;
  const double fx = fy + MiddleOfChroma(lab[1]) / 500, fz = fy - MiddleOfChroma(lab[2]) / 200;
  const double x = InverseF(fx) * kWhiteX / 100, y = InverseF(fy), z = InverseF(fz) * kWhiteZ / 100;
  rgb[0] = GammaCoded(3.240478992462158 * x - 1.5371500253677368 * y - 0.49853500723838806 * z);
  rgb[1] = GammaCoded(-0.9692559838294983 * x + 1.875991940498352 * y + 0.04155600070953369 * z);
  rgb[2] = GammaCoded(0.05564799904823303 * x - 0.20404300093650818 * y + 1.0573110580444336 * z);
}

}  // namespace qv_test
