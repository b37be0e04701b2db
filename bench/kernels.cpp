// The formula kernels through the exported function, as a share of memcpy moving as many bytes in the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Qvclr15x.h"

namespace {

struct Pair {
  const char* name;
  uint32_t from, to;
};
constexpr Pair kPairs[] = {{"RGB>BGR", CS_RGB, CS_BGR},   {"RGB>CMY", CS_RGB, CS_CMY},   {"CMY>BGR", CS_CMY, CS_BGR},
                           {"RGB>CMYK", CS_RGB, CS_CMYK}, {"CMYK>RGB", CS_CMYK, CS_RGB}, {"CMY>CMYK", CS_CMY, CS_CMYK}};
constexpr struct { int32_t width, height; } kSizes[] = {{16, 1}, {1920, 1080}, {4000, 3000}};

size_t PixelBytes(uint32_t space) { return space == CS_CMYK ? 4 : 3; }

// Best of several runs: seconds to copy `bytes`.
double SecondsOfMemcpy(uint8_t* to, const uint8_t* from, size_t bytes) {
  using Clock = std::chrono::steady_clock;
  const size_t repeats = std::max<size_t>(1, (size_t{1} << 24) / bytes);
  double best = 1e9;
  for (int run = 0; run < 7; ++run) {
    const auto start = Clock::now();
    for (size_t i = 0; i < repeats; ++i) {
      std::memcpy(to, from, bytes);
      benchmark::ClobberMemory();
    }
    best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count() / static_cast<double>(repeats));
  }
  return best;
}

void Convert(benchmark::State& state, const Pair& pair, int32_t width, int32_t height) {
  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
  std::vector<uint8_t> source(pixels * 4), target(pixels * 4);
  std::minstd_rand random(1);
  for (uint8_t& byte : source) byte = static_cast<uint8_t>(random() >> 16);

  // Reading one side and writing the other is as much traffic as copying their mean.
  const size_t moved = pixels * (PixelBytes(pair.from) + PixelBytes(pair.to)) / 2;
  const double memcpy_seconds = SecondsOfMemcpy(target.data(), source.data(), moved);
  double seconds = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    if (Q_ClrConvertDirect(pair.from, pair.to, source.data(), target.data(), width, height, 0, 0) != SUCCESS) {
      state.SkipWithError("the conversion failed");
      return;
    }
    const double step = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    state.SetIterationTime(step);
    seconds += step;
  }
  const double mean = seconds / static_cast<double>(state.iterations());
  state.counters["Mpixel/s"] = static_cast<double>(pixels) / mean / 1e6;
  state.counters["of_memcpy"] = memcpy_seconds / mean;
}

}  // namespace

int main(int argc, char** argv) {
  for (const Pair& pair : kPairs) {
    for (const auto& size : kSizes) {
      const std::string name =
          std::string(pair.name) + "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
      benchmark::RegisterBenchmark(name.c_str(), Convert, pair, size.width, size.height)->UseManualTime();
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
