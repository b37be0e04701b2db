#include "qvclr/lab_records.h"

#include "base/exact_math.h"

namespace qv {
namespace {

constexpr std::array<double, 3> kWhite = {95.0166015625, 100.0, 108.76499938964844};
constexpr std::array<double, 9> kRgbFromXyz = {3.240478992462158,   -1.5371500253677368,  -0.49853500723838806,
                                               -0.9692559838294983, 1.875991940498352,    0.04155600070953369,
                                               0.05564799904823303, -0.20404300093650818, 1.0573110580444336};
constexpr std::array<double, 9> kXyzFromRgb = {0.4124529957771301,  0.3575800061225891,  0.18042300641536713,
                                               0.21267099678516388, 0.7151600122451782,  0.0721689984202385,
                                               0.01933399960398674, 0.11919300258159637, 0.9502270221710205};

constexpr int32_t kLRange = 100, kARange = 170, kBRange = 200;  // the defaults

constexpr int32_t RangeOr(int32_t range, int32_t by_default) { return range > 0 ? range : by_default; }

LabConstants Constants(const LabParams& params, const std::array<double, 9>& matrix) {
  return {kWhite,          matrix,
          params.nLOffset, RangeOr(params.nLRange, kLRange),
          params.nAOffset, RangeOr(params.nARange, kARange),
          params.nBOffset, RangeOr(params.nBRange, kBRange)};
}

}  // namespace

double LabCurve(double t) { return t > kLinearBelow ? CubeRoot(t) : kSlope * t + kIntercept; }

double InverseLabCurve(double f) {
  const double cube = f * f * f;
  return cube > kLinearBelow ? cube : (f - kIntercept) / kSlope;
}

LabConstants ChangedLabToRgbConstants() {
  return {{96.421, 99.997, 82.524},
          {2.830880641937256, -1.0300474166870117, -0.5604600310325623, -1.5802161693572998, 2.7214279174804688,
           0.026361215859651566, 0.2055138498544693, -0.5249314904212952, 1.7662780284881592},
          0,
          kLRange,
          128,
          kARange,
          96,
          kBRange};
}

void ChangeLabCoding(const LabParams& change, LabConstants* constants) {
  const uint32_t flags = change.nFlags;
  if (flags & 1) constants->l_offset = change.nLOffset;
  if (flags & 2) constants->l_range = RangeOr(change.nLRange, kLRange);
  if (flags & 4) constants->a_offset = change.nAOffset;
  if (flags & 8) constants->a_range = RangeOr(change.nARange, kARange);
  if (flags & 16) constants->b_offset = change.nBOffset;
  if (flags & 32) constants->b_range = RangeOr(change.nBRange, kBRange);
}

LabConstants LabToRgbConstants(const LabParams& params) { return Constants(params, kRgbFromXyz); }
LabConstants RgbToLabConstants(const LabParams& params) { return Constants(params, kXyzFromRgb); }

double BeginOfByte(size_t byte, uint32_t gamma) {
  return RealPower((static_cast<double>(byte) - 0.5) / 255, 1 / (gamma / 100.0));
}

void BuildTables(LabToRgbRecord& record, uint32_t gamma) {
  for (size_t i = 0; i < record.byte_begins.size(); ++i) {
    record.byte_begins[i] = static_cast<float>(BeginOfByte(i + 1, gamma));
  }
}

void BuildTables(RgbToLabRecord& record, uint32_t gamma) {
  const double exponent = 1 / (gamma / 100.0);
  for (size_t byte = 0; byte < 256; ++byte) record.linear[byte] = RealPower(static_cast<double>(byte) / 255, exponent);
  for (size_t i = 0; i < record.lab_curve.size(); ++i) {
    record.lab_curve[i] = LabCurve(static_cast<double>(i) / kLabCurveSteps);
  }
}

}  // namespace qv
