// How much two threads with a converter each do of what one does; a loop of pure arithmetic tells what the machine
// gives.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <numeric>
#include <thread>

#include "Qvclr15x.h"
#include "measure.h"

namespace qv_bench {
namespace {

using Work = std::function<void()>;

Work Converting(uint32_t method, uint32_t from, uint32_t to) {
  constexpr int32_t kWidth = 256, kHeight = 64;
  ConversionParams params{};
  params.uStructSize = sizeof params;
  params.nActiveMethod = params.nMethodMask = method;
  ColorConverter* made = nullptr;
  Q_ClrInit(&made, from, to, &params);
  const std::shared_ptr<ColorConverter> converter(made, [](ColorConverter* handle) { Q_ClrFree(handle); });
  std::vector<uint8_t> source(kWidth * kHeight * 4), target(source.size());
  std::iota(source.begin(), source.end(), uint8_t{0});
  return [=]() mutable { Q_ClrConvert(converter.get(), source.data(), target.data(), kWidth, kHeight, 0, 0); };
}

Work Arithmetic() {
  return [state = 1u]() mutable {
    for (int i = 0; i < 4096; ++i) state = state * 1664525 + 1013904223;
    benchmark::DoNotOptimize(state);
  };
}

double CallsPerSecond(size_t threads, const std::function<Work()>& make) {
  using Clock = std::chrono::steady_clock;
  std::atomic<size_t> ready{0}, calls{0};
  const auto run = [&] {
    const Work work = make();
    ++ready;
    while (ready < threads) continue;
    const auto end = Clock::now() + std::chrono::milliseconds(50);
    size_t done = 0;
    while (Clock::now() < end) {
      for (int i = 0; i < 16; ++i) work();
      done += 16;
    }
    calls += done;
  };
  std::vector<std::jthread> running;
  for (size_t i = 0; i < threads; ++i) running.emplace_back(run);
  running.clear();
  return static_cast<double>(calls) / 0.05;
}

void Register(const std::string& what, const std::function<Work()>& make) {
  const auto run = [make](benchmark::State& state) {
    double one = 0, two = 0;
    for (auto _ : state) {
      one = std::max(one, CallsPerSecond(1, make));
      two = std::max(two, CallsPerSecond(2, make));
      state.SetIterationTime(0.1);
    }
    state.counters["of_one"] = two / one;
  };
  benchmark::RegisterBenchmark(("threads/" + what + "/256x64/photo/this").c_str(), run)->UseManualTime()->MinTime(0.5);
}

}  // namespace

void RegisterThreads() {
  Register("arithmetic", Arithmetic);
  constexpr struct {
    const char* name;
    uint32_t method, from, to;
  } kPairs[] = {{"RGB>HSV", METHOD_FORMULA, CS_RGB, CS_HSV},      {"HLS>RGB", METHOD_FORMULA, CS_HLS, CS_RGB},
                {"RGB>LAB", METHOD_FORMULA, CS_RGB, CS_LAB},      {"RGB>YCBCR", METHOD_FORMULA, CS_RGB, CS_YCBCR},
                {"HSI>RGB", METHOD_FORMULA, CS_HSI, CS_RGB},      {"HSV>XYZ", METHOD_FORMULA, CS_HSV, CS_XYZ},
                {"RGB>CMYK by ICC", METHOD_ICC, CS_RGB, CS_CMYK}, {"CMYK>RGB by ICC", METHOD_ICC, CS_CMYK, CS_RGB}};
  for (const auto& pair : kPairs) {
    Register(pair.name, [&pair] { return Converting(pair.method, pair.from, pair.to); });
  }
}

}  // namespace qv_bench
