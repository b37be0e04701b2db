// What every kernel of the catalogue is asked, whatever its formula is.
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <vector>

#include "qvclr/frame.h"
#include "qvclr/kernels/kernels.h"
#include "support/converters.h"
#include "support/guarded.h"
#include "support/sha256.h"

namespace {
using namespace qv;
using qv_test::GuardedBuffer, qv_test::RandomBytes;
using Bytes = std::vector<uint8_t>;
using Flush = GuardedBuffer::Flush;
constexpr uint8_t kUntouched = 0xCC;

struct CatalogueKernel {
  const Space* space;
  const Kernel* kernel;
  bool from_rgb;
};

std::vector<CatalogueKernel> CatalogueKernels() {
  std::vector<CatalogueKernel> list;
  const auto add = [&](const Space& space, const Kernel* kernel, bool from_rgb) {
    const bool known =
        std::ranges::find(list, kernel, &CatalogueKernel::kernel) != list.end();  // two spaces share swaps
    if (kernel && !known) list.push_back({&space, kernel, from_rgb});
  };
  for (const Space& space : AllSpaces()) {
    add(space, space.to_rgb, false);
    add(space, space.from_rgb, true);
  }
  return list;
}

struct Plane {
  size_t first, line, rows;
};
std::vector<Plane> PlanesOf(const Frame& packed) {
  const auto width = static_cast<size_t>(packed.width), pixels = width * packed.Rows();
  if (!packed.space->planar) return {{0, packed.LineBytes(), packed.Rows()}};
  const Plane chroma{pixels, width / 4, packed.Rows() / 4};
  return {{0, width, packed.Rows()}, chroma, {pixels + pixels / 16, chroma.line, chroma.rows}};
}

// A band of units beside one another, each a frame like `unit`.
Bytes Beside(const std::vector<Bytes>& units, const Frame& unit, const Frame& band) {
  Bytes bytes(band.KernelBytes());
  const std::vector<Plane> from = PlanesOf(unit), to = PlanesOf(band);
  for (size_t u = 0; u < static_cast<size_t>(band.width / unit.width); ++u) {
    for (size_t p = 0; p < to.size(); ++p) {
      for (size_t y = 0; y < to[p].rows; ++y) {
        std::copy_n(&units[u][from[p].first + y * from[p].line], from[p].line,
                    &bytes[to[p].first + y * to[p].line + u * from[p].line]);
      }
    }
  }
  return bytes;
}

// Lays packed lines into a frame; a planar one has its padding behind everything.
void Place(const Bytes& packed, const Frame& frame, uint8_t* to) {
  const size_t line = frame.space->planar ? packed.size() : frame.LineBytes();
  for (size_t y = 0; y * line < packed.size(); ++y) {
    std::copy_n(&packed[y * line], line, to + y * (line + frame.Padding()));
  }
}
Bytes Padded(const Bytes& packed, const Frame& frame) {
  Bytes bytes(frame.KernelBytes(), kUntouched);
  Place(packed, frame, bytes.data());
  return bytes;
}

Bytes EndsSwapped(Bytes rgb) {
  for (size_t i = 0; i < rgb.size(); i += 3) std::swap(rgb[i], rgb[i + 2]);
  return rgb;
}

// Many greys and many ends of the range.
Bytes EdgeBytes(size_t count, uint64_t seed) {
  Bytes bytes = RandomBytes(count, seed);
  for (size_t i = 1; i < count; ++i) {
    if (bytes[i] % 4 != 0) bytes[i] = bytes[i] % 4 == 1 ? bytes[i - 1] : uint8_t(bytes[i] % 4 == 2 ? 0 : 255);
  }
  return bytes;
}

struct Outcome {
  Status status;
  Bytes bytes;
  bool operator==(const Outcome&) const = default;
};

class EveryKernel : public testing::TestWithParam<CatalogueKernel> {
 protected:
  const Kernel& kernel() const { return *GetParam().kernel; }
  bool from_rgb() const { return GetParam().from_rgb; }
  Frame Side(bool rgb, size_t units, size_t bands, int32_t pad) const {
    return {rgb ? FindSpace(CS_RGB) : GetParam().space, static_cast<int32_t>(units * kernel().unit_pixels),
            static_cast<int32_t>(bands * kernel().band_rows), pad};
  }
  Frame In(size_t units, size_t bands = 1, int32_t pad = 0) const { return Side(from_rgb(), units, bands, pad); }
  Frame Out(size_t units, size_t bands = 1, int32_t pad = 0) const { return Side(!from_rgb(), units, bands, pad); }

  // Over buffers that hold exactly what may be touched.
  Outcome Run(const Frame& in, const Bytes& source, const Frame& out, const RowArgs& args = {},
              Flush flush = Flush::kEnd) const {
    GuardedBuffer src(source, flush), dst(Bytes(out.KernelBytes(), kUntouched), flush);
    src.MakeReadOnly();
    const Status status = RunKernel(kernel(), in, src.data(), out, dst.data(), args);
    return {status, Bytes(dst.data(), dst.data() + dst.size())};
  }

  // A source in which the kernel refuses no pixel.
  Bytes AcceptedSource(size_t units, size_t bands) const {
    for (uint64_t seed = 1;; ++seed) {
      const Bytes source = RandomBytes(In(units, bands).KernelBytes(), seed);
      if (seed == 100 || Ok(Run(In(units, bands), source, Out(units, bands)).status)) return source;
    }
  }

  void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};

TEST_P(EveryKernel, GivesTheSameBytesOnEveryInstructionSetAndWidth) {
  constexpr size_t kUnits = 130;
  const std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
  for (const bool edges : {false, true}) {
    std::vector<Bytes> sources, results;
    size_t accepted = 0;  // units in front of the first one that the kernel refuses
    Status status = kSuccess;
    for (size_t u = 0; u < kUnits; ++u) {
      const size_t bytes = In(1).KernelBytes();
      sources.push_back(edges ? EdgeBytes(bytes, u + 1) : RandomBytes(bytes, u + 1));
      Outcome one = Run(In(1), sources[u], Out(1));
      if (!Ok(status)) std::ranges::fill(one.bytes, kUntouched);
      if (Ok(status)) status = one.status;
      if (Ok(status)) ++accepted;
      results.push_back(one.bytes);
    }
    for (const int64_t target : targets) {
      hwy::SetSupportedTargetsForTest(target);
      for (size_t width = 1; width <= kUnits; ++width) {
        const Outcome expected{width > accepted ? status : kSuccess, Beside(results, Out(1), Out(width))};
        const Bytes source = Beside(sources, In(1), In(width));
        for (const Flush flush : {Flush::kEnd, Flush::kStart}) {
          ASSERT_TRUE(Run(In(width), source, Out(width), {}, flush) == expected)
              << hwy::TargetName(target) << ", " << width << " units";
        }
      }
    }
  }
}

TEST_P(EveryKernel, TakesBgrOrderAsRgbOrderWithTheEndsSwapped) {
  if (IsRgb(*GetParam().space)) GTEST_SKIP() << "both sides are RGB";
  const Bytes source = EdgeBytes(In(131).KernelBytes(), 1);
  const Outcome rgb = Run(In(131), source, Out(131));
  const Outcome bgr = Run(In(131), from_rgb() ? EndsSwapped(source) : source, Out(131), {.rgb_first = false});
  EXPECT_EQ(bgr.status, rgb.status);
  EXPECT_EQ(from_rgb() ? bgr.bytes : EndsSwapped(bgr.bytes), rgb.bytes);
}

TEST_P(EveryKernel, LeavesPaddingAlone) {
  const Bytes source = AcceptedSource(5, 3);
  const Outcome packed = Run(In(5, 3), source, Out(5, 3));
  ASSERT_EQ(packed.status, kSuccess);
  for (int32_t in_pad = -2; in_pad <= 5; ++in_pad) {  // below 0: none
    for (int32_t out_pad = -2; out_pad <= 5; ++out_pad) {
      const Frame in = In(5, 3, in_pad), out = Out(5, 3, out_pad);
      EXPECT_EQ(Run(in, Padded(source, in), out).bytes, Padded(packed.bytes, out)) << in_pad << " and " << out_pad;
    }
  }
}

TEST_P(EveryKernel, GivesTheSameBytesInPlaceAndWhereverTheBuffersOverlap) {
  constexpr size_t kUnits = 67, kBands = 2;
  const Bytes source = AcceptedSource(kUnits, kBands);
  const std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
  struct Case {
    int32_t in_pad, out_pad;
    bool rgb_first;
  };
  for (const Case& c : {Case{0, 0, true}, {0, 0, false}, {3, 1, true}, {0, 5, false}, {2, 2, true}}) {
    const RowArgs args{.rgb_first = c.rgb_first};
    const Frame in = In(kUnits, kBands, c.in_pad), out = Out(kUnits, kBands, c.out_pad);
    const Outcome apart = Run(In(kUnits, kBands), source, Out(kUnits, kBands), args);
    ASSERT_EQ(apart.status, kSuccess);
    const auto reach = static_cast<ptrdiff_t>(std::max(in.KernelBytes(), out.KernelBytes())) + 2;
    for (ptrdiff_t distance = -reach; distance <= reach; ++distance) {
      if (std::abs(distance) > 20 && distance % 37 != 0) continue;
      Bytes before(static_cast<size_t>(3 * reach), kUntouched);
      Place(source, in, before.data() + reach);
      Bytes expected = before;
      Place(apart.bytes, out, expected.data() + reach + distance);
      for (const int64_t target : targets) {
        hwy::SetSupportedTargetsForTest(target);
        Bytes shared = before;
        uint8_t* src = shared.data() + reach;
        ASSERT_EQ(RunKernel(kernel(), in, src, out, src + distance, args), kSuccess);
        ASSERT_TRUE(shared == expected) << "output " << distance << " bytes on, " << hwy::TargetName(target);
      }
    }
  }
}

TEST_P(EveryKernel, WritesNothingWhereABufferOrTheSizeIsRefused) {
  const Frame in = In(4, 2, 3), out = Out(4, 2, 3), odd{FindSpace(CS_YUY2), 3, 1, 0};
  const size_t src_bytes = in.KernelBytes(), dst_bytes = out.KernelBytes();
  const auto run = [&](const Frame& from, size_t readable, size_t writable) {
    GuardedBuffer src(readable), dst(Bytes(writable, kUntouched));
    const Status status = RunKernel(kernel(), from, src.data(), out, dst.data(), {});
    EXPECT_TRUE(Ok(status) || std::ranges::count(dst.bytes(), kUntouched) == std::ssize(dst.bytes()));
    return status;
  };
  EXPECT_EQ(run(in, src_bytes, dst_bytes), kSuccess);
  EXPECT_EQ(run(odd, src_bytes, dst_bytes), kInvalidWidthAlignment);
  // No padding behind the last line.
  EXPECT_EQ(run(in, src_bytes, dst_bytes - 3), kInvalidParameter);
  EXPECT_EQ(run(in, src_bytes - 3, dst_bytes), in.space->planar ? kSuccess : kInvalidParameter);

  GuardedBuffer src(src_bytes), dst(dst_bytes);
  dst.MakeReadOnly();
  EXPECT_EQ(RunKernel(kernel(), in, src.data(), out, dst.data(), {}), kInvalidParameter);
}

// All 2^24 values of the first three bytes, a fourth running along; a pixel that is refused counts as zeros.
std::string HashOfOutputs(const Kernel& kernel, RowArgs args) {
  if (kernel.prepare) kernel.prepare(args);
  qv_test::Sha256 hash;
  Bytes src(65536 * kernel.src_bytes), dst(65536 * kernel.dst_bytes);
  for (size_t first = 0; first < 256; ++first) {
    for (size_t x = 0; x < 65536; ++x) {
      const uint8_t pixel[] = {uint8_t(first), uint8_t(x / 256), uint8_t(x), uint8_t(first + 3 * (x / 256) + 5 * x)};
      std::copy_n(pixel, kernel.src_bytes, &src[x * kernel.src_bytes]);
    }
    const bool refused = !Ok(kernel.row(src.data(), dst.data(), 65536, args));
    for (size_t x = 0; refused && x < 65536; ++x) {
      uint8_t* pixel = &dst[x * kernel.dst_bytes];
      if (!Ok(kernel.row(&src[x * kernel.src_bytes], pixel, 1, args))) std::fill_n(pixel, kernel.dst_bytes, uint8_t{0});
    }
    hash.Add(dst);
  }
  return hash.Hex();
}

TEST_P(EveryKernel, GivesTheOutputOnRecord) {
  if (kernel().unit_pixels > 1) GTEST_SKIP() << "its input is a packed group";
  EXPECT_EQ(kernel().src_bytes * 8, In(1).space->bits);
  EXPECT_EQ(kernel().dst_bytes * 8, Out(1).space->bits);
  std::map<std::string, std::string> recorded;
  std::ifstream file(QV_TEST_DATA "/kernel_hashes.txt");
  for (std::string name, hex; file >> name >> hex;) recorded[name] = hex;
  const bool by_parameter = &kernel() == &RGBToCMYK || &kernel() == &CMYKToRGB;
  for (const int32_t black : by_parameter ? std::vector<int32_t>{175, 1000, 3000, -1} : std::vector<int32_t>{175}) {
    std::string name = kernel().name;
    if (by_parameter) name.append("/").append(std::to_string(black));
    const std::string hex = HashOfOutputs(kernel(), {.black_param = black});
    EXPECT_EQ(recorded[name], hex) << "the line to add: " << name << ' ' << hex;
  }
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryKernel, testing::ValuesIn(CatalogueKernels()),
                         [](const auto& tested) { return std::string(tested.param.kernel->name); });

TEST(Catalogue, FindsItsSpacesAndNoOthers) {
  for (const uint32_t id : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 128}) {
    ASSERT_TRUE(FindSpace(id)) << id;
    EXPECT_EQ(FindSpace(id)->id, id);
  }
  for (const uint32_t id : {16u, 127u, 129u, UINT32_MAX}) EXPECT_EQ(FindSpace(id), nullptr) << id;
}

}  // namespace
