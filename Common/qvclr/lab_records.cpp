#include "qvclr/lab_records.h"

namespace qv {
namespace {

constexpr std::array<double, 3> kWhite = {95.0166015625, 100.0, 108.76499938964844};
constexpr std::array<double, 9> kRgbFromXyz = {3.240478992462158,   -1.5371500253677368,  -0.49853500723838806,
                                               -0.9692559838294983, 1.875991940498352,    0.04155600070953369,
                                               0.05564799904823303, -0.20404300093650818, 1.0573110580444336};
constexpr std::array<double, 9> kXyzFromRgb = {0.4124529957771301,  0.3575800061225891,  0.18042300641536713,
                                               0.21267099678516388, 0.7151600122451782,  0.0721689984202385,
                                               0.01933399960398674, 0.11919300258159637, 0.9502270221710205};

LabConstants Constants(const LabParams& params, const std::array<double, 9>& matrix) {
  return {kWhite,          matrix,         params.nLOffset, params.nLRange,
          params.nAOffset, params.nARange, params.nBOffset, params.nBRange};
}

}  // namespace

LabConstants LabToRgbConstants(const LabParams& params) { return Constants(params, kRgbFromXyz); }
LabConstants RgbToLabConstants(const LabParams& params) { return Constants(params, kXyzFromRgb); }

}  // namespace qv
