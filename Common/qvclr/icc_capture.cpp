#include "qvclr/icc_capture.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "qvclr/icc_engine.h"
#include "qvclr/icc_grid.h"
#include "qvclr/icc_shaper.h"

namespace qv {
namespace {

using Interpolator = _cmsInterpFn16;

// What interpolations of three and of four inputs pass by on their way to the engine's own. One context at a time is
// watched, by the thread that holds the mutex and makes the context work.
struct Watch {
  std::atomic<Interpolator> engines_own[2]{};
  std::atomic<cmsContext> watched{nullptr};
  std::mutex mutex;
  const cmsInterpParams* seen = nullptr;
  size_t count = 0;
};
Watch watch;

template <size_t kInputs>
void Interpolate(const cmsUInt16Number* in, cmsUInt16Number* out, const cmsInterpParams* params) {
  if (watch.watched.load(std::memory_order_relaxed) == params->ContextID) {
    watch.seen = params;
    ++watch.count;
  }
  watch.engines_own[kInputs - 3].load(std::memory_order_relaxed)(in, out, params);
}

// Where it gives none, the engine takes its own.
cmsInterpFunction FindInterpolator(cmsUInt32Number inputs, cmsUInt32Number /*outputs*/, cmsUInt32Number flags) {
  cmsInterpFunction found{};
  if ((flags & (CMS_LERP_FLAGS_FLOAT | CMS_LERP_FLAGS_TRILINEAR)) != 0) return found;
  if (inputs == 3) found.Lerp16 = Interpolate<3>;
  if (inputs == 4) found.Lerp16 = Interpolate<4>;
  return found;
}

// Looks at what the engine is about to optimize and leaves it alone. Identities, which are empty by then, are not
// shown.
cmsBool LookAt(cmsPipeline** pipeline, cmsUInt32Number /*intent*/, cmsUInt32Number* /*in*/, cmsUInt32Number* /*out*/,
               cmsUInt32Number* /*flags*/) {
  if (IccShaper* shaper = Engine::Of(cmsGetPipelineContextID(*pipeline)).shaper) FillShaper(*pipeline, shaper);
  return FALSE;
}

const cmsInterpParams* ParamsOf(cmsStage* stage) {
  return static_cast<const _cmsStageCLutData*>(cmsStageData(stage))->Params;
}

// The one interpolation that a pixel goes through, if it is but one.
const cmsInterpParams* WatchOnePixel(cmsContext context, cmsHTRANSFORM transform) {
  const uint8_t in[4] = {1, 2, 3, 4};
  uint8_t out[4];
  const std::lock_guard lock(watch.mutex);
  watch.count = 0;
  watch.watched.store(context, std::memory_order_relaxed);
  cmsDoTransform(transform, in, out, 1);
  watch.watched.store(nullptr, std::memory_order_relaxed);
  return watch.count == 1 ? watch.seen : nullptr;
}

// The engine's interpolation in a cell of its own whose sums stand next to every place where rounding turns.
bool RoundsAlike(cmsContext context, size_t inputs, uint32_t slack) {
  constexpr int kTurns = 9, kAround = 6, kOutputs = kTurns * kAround;
  constexpr uint16_t kFirst = 40000;
  // The rest 128 along x is 257 * 128 + 1, the rest 1 along y is 257.
  const CornerWeights weights = WeightsOf({128, 1, 0});
  cmsUInt16Number colours[16][kOutputs];
  Quad cells[kOutputs][2] = {};
  for (int i = 0; i < kOutputs; ++i) {
    const int distance = (i / kAround - kTurns / 2) * 65535 + 32767 + i % kAround - kAround / 2;
    const int along_x = (distance % 257 + 257) % 257, along_y = (distance - along_x) / 257 - 128 * along_x;
    for (size_t corner = 0; corner < 16; ++corner) {
      const int value = kFirst + (corner & 4 ? along_x : 0) + (corner & 2 ? along_y : 0);
      colours[corner][i] = static_cast<cmsUInt16Number>(value);
      QuadChannel& quad = cells[i][corner & 1].channels[0];
      quad.high[corner >> 1 & 3] = static_cast<uint8_t>(value >> 8 ^ 0x80);
      quad.low[corner >> 1 & 3] = static_cast<uint8_t>(value ^ 0x80);
    }
  }
  cmsStage* stage =
      cmsStageAllocCLut16bit(context, 2, static_cast<cmsUInt32Number>(inputs), kOutputs, colours[inputs == 3 ? 8 : 0]);
  const cmsInterpParams* params = ParamsOf(stage);
  constexpr cmsUInt16Number kPixel[] = {0, 128 * 257, 257, 0};
  cmsUInt16Number out[kOutputs];
  params->Interpolation.Lerp16(inputs == 3 ? kPixel + 1 : kPixel, out, params);
  cmsStageFree(stage);
  return std::ranges::equal(out, cells, [&](cmsUInt16Number result, const Quad(&cell)[2]) {
    return result == InterpolateInCell(cell, 0, weights, slack);
  });
}

// Pixels go through both the engine's transform and what stands in for it, row(src, dst, pixels).
template <typename Row>
class Comparison {
 public:
  Comparison(cmsHTRANSFORM transform, size_t inputs, size_t outputs, Row row)
      : transform_(transform), inputs_(inputs), outputs_(outputs), row_(row) {}

  void Add(uint32_t value) {
    in_[used_++] = static_cast<uint8_t>(value);
    if (used_ == kPixels * inputs_) Compare();
  }
  // All that was added since the last time.
  bool Passes() {
    Compare();
    return std::exchange(equal_, true);
  }

  // All over the space, a quarter of the values at the ends and at nodes.
  bool PassesScattered() {
    uint32_t state = 1;
    for (size_t i = 0; i < 4096 * inputs_; ++i) {
      state = state * 1664525 + 1013904223;
      const uint32_t kind = state >> 30, value = state >> 20 & 255;
      Add(kind != 0 ? value : value % 2 == 0 ? value / 16 * 17 : value < 128 ? 0 : 255);
    }
    return Passes();
  }

 private:
  void Compare() {
    const size_t pixels = used_ / inputs_;
    cmsDoTransform(transform_, in_, by_engine_, static_cast<cmsUInt32Number>(pixels));
    row_(in_, by_row_, pixels);
    equal_ = equal_ && std::equal(by_engine_, by_engine_ + pixels * outputs_, by_row_);
    used_ = 0;
  }

  static constexpr size_t kPixels = 1000;
  cmsHTRANSFORM transform_;
  size_t inputs_, outputs_;
  Row row_;
  bool equal_ = true;
  size_t used_ = 0;
  uint8_t in_[4 * kPixels], by_engine_[4 * kPixels], by_row_[4 * kPixels];
};

// A grid's pixels.
class Trial {
 public:
  Trial(cmsHTRANSFORM transform, IccGrid& grid) : grid_(grid), pixels_(transform, grid.inputs, grid.outputs, {grid}) {}

  bool PassesScattered() { return pixels_.PassesScattered(); }

  // Every pixel for which a steep cell is used, of which there must not be too many. Marks cells where the engine's
  // sums do overflow.
  bool PassesSteep(const SteepCells& steep) {
    size_t allowed = 100000;
    return std::all_of(steep.nodes, steep.nodes + steep.count, [&](const Nodes& nodes) {
      if (PassesCell(nodes, allowed)) return true;
      if (grid_.inputs != 3 || grid_.outputs != 3) return false;
      MarkCell(&grid_, nodes);
      return PassesCell(nodes, allowed);
    });
  }

 private:
  struct Values {
    uint32_t first, end;
  };
  Values ValuesAt(int node) const {
    const auto steps = static_cast<int>(grid_.nodes - 1);
    const auto from = [steps](int n) { return static_cast<uint32_t>((std::max(n, 0) * 255 + steps - 1) / steps); };
    return {from(node), std::min(from(node + 1), 256u)};
  }

  bool PassesCell(const Nodes& nodes, size_t& allowed) {
    Values values[4] = {{0, 1}};
    if (grid_.inputs == 4) values[0] = {ValuesAt(nodes[0] - 1).first, ValuesAt(nodes[0]).end};
    for (size_t k = 1; k < 4; ++k) values[k] = ValuesAt(nodes[k]);
    size_t pixels = 1;
    for (const Values& v : values) pixels *= v.end - v.first;
    if (pixels > allowed) return false;
    allowed -= pixels;
    for (size_t p = 0; p < pixels; ++p) AddPixel(values, p);
    return pixels_.Passes();
  }

  void AddPixel(const Values (&values)[4], size_t number) {
    uint32_t pixel[4];
    for (size_t k = 0; k < 4; ++k) {
      const size_t count = values[k].end - values[k].first;
      pixel[k] = values[k].first + static_cast<uint32_t>(number % count);
      number /= count;
    }
    if (grid_.swaps_input) std::swap(pixel[1], pixel[3]);
    for (size_t k = 4 - grid_.inputs; k < 4; ++k) pixels_.Add(pixel[k]);
  }

  struct Row {
    const IccGrid& grid;
    void operator()(const uint8_t* src, uint8_t* dst, size_t pixels) const { GridRow(grid, src, dst, pixels); }
  };
  IccGrid& grid_;
  Comparison<Row> pixels_;
};

}  // namespace

void PrepareCapture(cmsContext context) {
  for (const cmsUInt32Number inputs : {3u, 4u}) {
    cmsStage* stage = cmsStageAllocCLut16bit(context, 2, inputs, 1, nullptr);
    watch.engines_own[inputs - 3].store(ParamsOf(stage)->Interpolation.Lerp16, std::memory_order_relaxed);
    cmsStageFree(stage);
  }
  cmsPluginInterpolation plugin{{cmsPluginMagicNumber, kVersionOfPlugins, cmsPluginInterpolationSig, nullptr},
                                FindInterpolator};
  cmsPluginOptimization optimization{{cmsPluginMagicNumber, kVersionOfPlugins, cmsPluginOptimizationSig, &plugin.base},
                                     LookAt};
  cmsPluginTHR(context, &optimization);
}

Status CaptureGrid(cmsContext context, cmsHTRANSFORM transform, IccGrid* grid) {
  const cmsInterpParams* params = WatchOnePixel(context, transform);
  if (!params || params->nOutputs < 3 || params->nOutputs > 4) return kSuccess;
  const auto* nodes = params->nSamples;
  if (!std::all_of(nodes, nodes + params->nInputs, [nodes](cmsUInt32Number n) { return n == *nodes; })) return kSuccess;
  grid->inputs = params->nInputs;
  grid->outputs = params->nOutputs;
  grid->nodes = *nodes;
  if (!RoundsAlike(context, grid->inputs, 0)) {
    grid->slack = 1;
    if (!RoundsAlike(context, grid->inputs, 1)) return kSuccess;
  }
  SteepCells steep{};
  const Status status = FillGrid(static_cast<const uint16_t*>(params->Table), grid, &steep);
  if (!grid->quads) return status;
  Trial trial(transform, *grid);
  if (!trial.PassesScattered() || !trial.PassesSteep(steep)) EmptyGrid(grid);
  return kSuccess;
}

void CaptureShaper(cmsHTRANSFORM transform, IccShaper* shaper) {
  if (shaper->kind == IccShaper::Kind::kChannels) {
    for (size_t value = 0; value < 256; ++value) {
      const uint8_t in[3] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value), static_cast<uint8_t>(value)};
      uint8_t out[3];
      cmsDoTransform(transform, in, out, 1);
      if (shaper->swaps_output) std::swap(out[0], out[2]);
      for (size_t c = 0; c < 3; ++c) shaper->bytes[c][value] = out[c];
    }
  }
  if (shaper->kind == IccShaper::Kind::kNone) return;
  const auto row = [shaper](const uint8_t* src, uint8_t* dst, size_t pixels) { ShaperRow(*shaper, src, dst, pixels); };
  if (!Comparison(transform, 3, 3, row).PassesScattered()) shaper->kind = IccShaper::Kind::kNone;
}

}  // namespace qv
