#include "measure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>

#include "Qvclr15x.h"

namespace qv_bench {
namespace {

using Bytes = std::vector<uint8_t>;

size_t FrameBytes(const qv::Space& space, Size size) {
  return qv::Frame{&space, size.width, size.height, 0}.BytesToLastPixel();
}

Bytes RandomBytes(size_t count) {
  std::mt19937_64 random;
  Bytes bytes(count);
  size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const uint64_t eight = random();
    std::memcpy(&bytes[i], &eight, 8);
  }
  for (; i < count; ++i) bytes[i] = static_cast<uint8_t>(random());
  return bytes;
}

// R, G, B.
Bytes Photo(Size size) {
  Bytes bytes = RandomBytes(FrameBytes(*qv::FindSpace(CS_RGB), size));
  size_t i = 0;
  for (int32_t y = 0; y < size.height; ++y) {
    for (int32_t x = 0; x < size.width; ++x) {
      const int32_t across = x * 239 / size.width, down = y * 239 / size.height;
      for (const int32_t level : {across, down, (across + 239 - down) / 2}) {
        bytes[i] = static_cast<uint8_t>(level + bytes[i] % 16);
        ++i;
      }
    }
  }
  return bytes;
}

// Pixels that the conversion takes: noise that it refuses is replaced by noise of another space.
Bytes MakeSource(const Case& c, const Convert& convert, Bytes& target) {
  if (c.content == Content::kRandom) {
    Bytes noise = RandomBytes(FrameBytes(*c.from, c.size));
    if (convert(noise.data(), target.data(), c.size)) return noise;
  }
  Bytes rgb = c.content == Content::kPhoto ? Photo(c.size) : RandomBytes(FrameBytes(*qv::FindSpace(CS_RGB), c.size));
  if (c.from->id == CS_RGB) return rgb;
  Bytes source(FrameBytes(*c.from, c.size));
  Q_ClrConvertDirect(CS_RGB, c.from->id, rgb.data(), source.data(), c.size.width, c.size.height, 0, 0);
  return source;
}

// Seconds a call, of several in a row, so that the clock itself counts for nothing.
template <typename Call>
double Seconds(size_t calls, Call&& call) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  for (size_t i = 0; i < calls; ++i) {
    call();
    benchmark::ClobberMemory();
  }
  return std::chrono::duration<double>(Clock::now() - start).count() / static_cast<double>(calls);
}

void Run(benchmark::State& state, const Case& c, const Convert& convert) {
  const size_t pixels = static_cast<size_t>(c.size.width) * static_cast<size_t>(c.size.height);
  const size_t calls = std::max<size_t>(1, (size_t{1} << 15) / pixels);
  Bytes target(FrameBytes(*c.to, c.size));
  const Bytes source = MakeSource(c, convert, target);
  if (!convert(source.data(), target.data(), c.size)) {
    state.SkipWithError("the conversion failed");
    return;
  }
  // Reading one side and writing the other is as much traffic as copying their mean.
  Bytes from((source.size() + target.size()) / 2, 1), to(from.size());
  double copying = 1e9, converting = 1e9;  // the best: others of the machine's load are not of interest
  for (int i = 0; i < 7; ++i) {
    copying = std::min(copying, Seconds(calls, [&] { std::memcpy(to.data(), from.data(), from.size()); }));
  }
  for (auto _ : state) {
    const double seconds = Seconds(calls, [&] { convert(source.data(), target.data(), c.size); });
    state.SetIterationTime(seconds * static_cast<double>(calls));
    converting = std::min(converting, seconds);
  }
  state.counters["Mpixel/s"] = static_cast<double>(pixels) / converting / 1e6;
  state.counters["of_memcpy"] = copying / converting;
  state.counters["ns"] = converting * 1e9;
}

}  // namespace

void Case::Register(const std::string& who, Convert convert) const {
  const std::string name = group + "/" + pair + "/" + std::to_string(size.width) + "x" + std::to_string(size.height) +
                           (content == Content::kPhoto ? "/photo/" : "/random/") + who;
  benchmark::RegisterBenchmark(name.c_str(), [c = *this, convert = std::move(convert)](benchmark::State& state) {
    Run(state, c, convert);
  })->UseManualTime();
}

std::string NameOf(const qv::Space& space) { return space.name + std::strlen("CS_"); }
std::string PairName(const qv::Space& from, const qv::Space& to) { return NameOf(from) + ">" + NameOf(to); }

std::vector<Peer>& Peers() {
  static std::vector<Peer> peers;
  return peers;
}

}  // namespace qv_bench
