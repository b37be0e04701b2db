#include "qvclr/icc_shaper.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <cmath>

#include "qvclr/icc_grid.h"

namespace qv {
namespace {

// Where the stage is of that type and of three channels, its data, and `stage` becomes the next one.
template <typename Data>
const Data* Take(const cmsStage** stage, cmsStageSignature type) {
  if (!*stage || cmsStageType(*stage) != type) return nullptr;
  if (cmsStageInputChannels(*stage) != 3 || cmsStageOutputChannels(*stage) != 3) return nullptr;
  const auto* data = static_cast<const Data*>(cmsStageData(*stage));
  *stage = cmsStageNext(*stage);
  return data;
}

double In16384ths(double value) { return std::floor(value * IccShaper::kOne + 0.5); }

bool FillLinear(const cmsToneCurve* curve, IccShaper::Table& low, IccShaper::Table& high) {
  for (size_t i = 0; i < low.size(); ++i) {
    const double value = In16384ths(cmsEvalToneCurveFloat(curve, static_cast<float>(static_cast<double>(i) / 255)));
    if (!(value >= 0 && value <= IccShaper::kOne)) return false;
    low[i] = static_cast<uint8_t>(static_cast<int>(value));
    high[i] = static_cast<uint8_t>(static_cast<int>(value) >> 8);
  }
  return true;
}

// As the engine rounds, to 65536ths before it takes the floor.
uint32_t WordOf(double value) {
  return static_cast<uint32_t>(std::floor(std::clamp(value, 0.0, 1.0) * 65535.0 + (0.5 + 0x1p-17)));
}

template <size_t kSize>
bool FillEncoded(const cmsToneCurve* curve, std::array<uint8_t, kSize>& encoded) {
  for (size_t i = 0; i < kSize; ++i) {
    const float light = static_cast<float>(static_cast<double>(i) / IccShaper::kOne);
    const double value = cmsEvalToneCurveFloat(curve, light);
    if (std::isnan(value)) return false;
    encoded[i] = ByteOf(WordOf(value));
  }
  return true;
}

bool FillMatrix(const cmsMAT3& of, IccShaper* shaper) {
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      const double value = In16384ths(of.v[i].n[j]);
      if (!(std::abs(value) <= INT16_MAX)) return false;
      shaper->matrix[i][j] = static_cast<int16_t>(value);
    }
  }
  return true;
}

bool HasOnlyCurves(const cmsStage* stage) {
  while (Take<_cmsStageToneCurvesData>(&stage, cmsSigCurveSetElemType)) {
  }
  return !stage;
}

}  // namespace

void FillShaper(const cmsPipeline* pipeline, IccShaper* shaper) {
  using Kind = IccShaper::Kind;
  shaper->kind = Kind::kNone;
  const cmsStage* stage = cmsPipelineGetPtrToFirstStage(pipeline);
  if (!stage) return;
  if (HasOnlyCurves(stage)) {
    shaper->kind = Kind::kChannels;
    return;
  }
  const auto* first = Take<_cmsStageToneCurvesData>(&stage, cmsSigCurveSetElemType);
  const auto* middle = Take<_cmsStageMatrixData>(&stage, cmsSigMatrixElemType);  // the engine has joined several
  const auto* last = Take<_cmsStageToneCurvesData>(&stage, cmsSigCurveSetElemType);
  if (!first || !middle || middle->Offset || !last || stage) return;
  cmsMAT3 matrix;
  std::copy_n(middle->Double, 9, &matrix.v[0].n[0]);
  if (_cmsMAT3isIdentity(&matrix)) {
    shaper->kind = Kind::kChannels;
    return;
  }
  if (!FillMatrix(matrix, shaper)) return;
  auto& encoded = shaper->encoded;
  for (size_t c = 0; c < 3; ++c) {
    if (!FillLinear(first->TheCurves[c], shaper->linear_low[c], shaper->linear_high[c])) return;
    if (!FillEncoded(last->TheCurves[c], encoded[c])) return;
    shaper->encoding[c] = static_cast<uint8_t>(std::ranges::find(encoded, encoded[c]) - encoded.begin());
  }
  shaper->kind = Kind::kMatrix;
}

void ShaperPixel(const IccShaper& shaper, const uint8_t* src, uint8_t* dst) {
  std::array<uint8_t, 3> in, out;
  std::copy_n(src, 3, in.begin());
  if (shaper.swaps_input) std::swap(in[0], in[2]);
  for (size_t c = 0; c < 3; ++c) {
    if (shaper.kind == IccShaper::Kind::kChannels) {
      out[c] = shaper.bytes[c][in[c]];
      continue;
    }
    int32_t sum = IccShaper::kOne / 2;
    for (size_t i = 0; i < 3; ++i) {
      sum += shaper.matrix[c][i] * (shaper.linear_low[i][in[i]] + 256 * shaper.linear_high[i][in[i]]);
    }
    out[c] = shaper.encoded[shaper.encoding[c]][static_cast<size_t>(std::clamp(sum >> 14, 0, IccShaper::kOne))];
  }
  if (shaper.swaps_output) std::swap(out[0], out[2]);
  std::copy_n(out.begin(), 3, dst);
}

}  // namespace qv
