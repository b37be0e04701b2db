// What every kernel is asked, whatever its formula is, and every kernel's formula over every input.
#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <string>

#include "qvclr/frame.h"
#include "qvclr/kernels/kernels.h"
#include "qvclr/lab_records.h"
#include "qvclr/yuv_settings.h"
#include "reference/models.h"
#include "support/bytes.h"
#include "support/system.h"

namespace {
using namespace qv;
using namespace qv_test;
using Flush = GuardedBuffer::Flush;
constexpr uint8_t kUntouched = 0xCC;

struct CatalogueKernel {
  const Space* space;
  const Kernel* kernel;
  bool from_rgb;
  const void* record = nullptr;
  bool ByTable() const { return kernel != space->to_rgb && kernel != space->from_rgb; }
};

// A converter's own settings, far from the plain ones.
template <typename Record>
const Record& LabRecord(const LabConstants& constants) {
  static const Record record = [&] {
    Record made{.constants = constants};
    BuildTables(made, 60);
    return made;
  }();
  return record;
}
const YuvSettings& OwnYuvSettings() {
  static const Bytes luma = RandomBytes(256);
  static const YuvSettings settings = MakeYuvSettings({44, 0, 446, 224, 150, 27, luma.data(), 256, 510, {}});
  return settings;
}

std::vector<CatalogueKernel> CatalogueKernels() {
  std::vector<CatalogueKernel> list = {{FindSpace(CS_CMYK), &EmuCMYKToRGB, false},
                                       {FindSpace(CS_LAB), &EmuRGBToLab, true},
                                       {FindSpace(CS_LAB), &EmuLabToRGB, false}};
  const auto add = [&](const Space& space, const Kernel* kernel, bool from_rgb) {
    const bool known =
        std::ranges::find(list, kernel, &CatalogueKernel::kernel) != list.end();  // two spaces share swaps
    if (kernel && !known) list.push_back({&space, kernel, from_rgb});
  };
  for (const Space& space : AllSpaces()) {
    add(space, space.to_rgb, false);
    add(space, space.from_rgb, true);
  }
  const LabParams lab{32, 0, 10, 120, 100, 300, 120, 250};
  const CatalogueKernel with_records[] = {
      {FindSpace(CS_YUV), &RGBToYUV, true, &OwnYuvSettings()},
      {FindSpace(CS_YUV), &YUVToRGB, false, &OwnYuvSettings()},
      {FindSpace(CS_LAB), &RGBToLab, true, &LabRecord<RgbToLabRecord>(RgbToLabConstants(lab))},
      {FindSpace(CS_LAB), &LabToRGB, false, &LabRecord<LabToRgbRecord>(LabToRgbConstants(lab))}};
  list.insert(list.end(), std::begin(with_records), std::end(with_records));
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

// Up to a page that nobody may touch: the last byte of the last node is the last one of the grid.
const uint8_t* RandomTable(const Kernel& kernel) {
  static GuardedBuffer inks(RandomBytes(3 * 17 * 17 * 17 * 17)), lab(RandomBytes(3 * 33 * 33 * 33));
  return &kernel == &EmuCMYKToRGB ? inks.data() : lab.data();
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
  RowArgs Args(bool rgb_first = true) const {
    return {.rgb_first = rgb_first,
            .record = GetParam().record,
            .table = GetParam().ByTable() ? RandomTable(kernel()) : nullptr};
  }
  Frame Side(bool rgb, size_t units, size_t bands, int32_t pad) const {
    return {rgb ? FindSpace(CS_RGB) : GetParam().space, static_cast<int32_t>(units * kernel().unit_pixels),
            static_cast<int32_t>(bands * kernel().band_rows), pad};
  }
  Frame In(size_t units, size_t bands = 1, int32_t pad = 0) const { return Side(from_rgb(), units, bands, pad); }
  Frame Out(size_t units, size_t bands = 1, int32_t pad = 0) const { return Side(!from_rgb(), units, bands, pad); }

  // Over buffers that hold exactly what may be touched.
  Outcome Run(const Frame& in, const Bytes& source, const Frame& out, const RowArgs& args,
              Flush flush = Flush::kEnd) const {
    GuardedBuffer src(source, flush), dst(Bytes(out.KernelBytes(), kUntouched), flush);
    src.MakeReadOnly();
    const Status status = RunKernel(kernel(), in, src.data(), out, dst.data(), args);
    return {status, Bytes(dst.data(), dst.data() + dst.size())};
  }
  Outcome Run(const Frame& in, const Bytes& source, const Frame& out) const { return Run(in, source, out, Args()); }

  // A source in which the kernel refuses no pixel.
  Bytes AcceptedSource(size_t units, size_t bands) const {
    for (uint64_t seed = 1;; ++seed) {
      const Bytes source = RandomBytes(In(units, bands).KernelBytes(), seed);
      if (seed == 100 || Ok(Run(In(units, bands), source, Out(units, bands)).status)) return source;
    }
  }

  // Every instruction set that a kernel's code is chosen by; one stands for all where it does not choose. Under
  // sanitizers, whose time is long, the best one.
  std::vector<int64_t> Targets() const {
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().DeInit();
    Run(In(1), Bytes(In(1).KernelBytes()), Out(1));
    std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
    if (QV_SANITIZED || !hwy::GetChosenTarget().IsInitialized()) targets.resize(1);
    return targets;
  }
  void TearDown() override { hwy::SetSupportedTargetsForTest(0); }

  void ExpectModelAndRecord(const std::string& name, int32_t black_param, size_t step);
};

// A width of one is always the scalar definition. With B first, the RGB side has its ends swapped.
TEST_P(EveryKernel, GivesTheSameBytesOnEveryInstructionSetAndWidth) {
  std::vector<size_t> widths(130);
  std::ranges::generate(widths, [width = size_t{0}]() mutable { return ++width; });
  widths.insert(widths.end(), {255, 256, 257, 383, 521});  // more than two of the widest blocks
  const bool swaps = !IsRgb(*GetParam().space);
  for (const bool edges : {false, true}) {
    std::vector<Bytes> sources, results;
    size_t accepted = 0;  // units in front of the first one that the kernel refuses
    Status status = kSuccess;
    for (size_t u = 0; u < widths.back(); ++u) {
      const size_t bytes = In(1).KernelBytes();
      sources.push_back(edges ? EdgeBytes(bytes, u + 1) : RandomBytes(bytes, u + 1));
      Outcome one = Run(In(1), sources[u], Out(1));
      if (!Ok(status)) std::ranges::fill(one.bytes, kUntouched);
      if (Ok(status)) status = one.status;
      if (Ok(status)) ++accepted;
      results.push_back(one.bytes);
    }
    for (const size_t width : widths) {
      const Frame in = In(width), out = Out(width);
      const Bytes source = Beside(sources, In(1), in), result = Beside(results, Out(1), out);
      for (const bool rgb_first : {true, false}) {
        const bool src_swapped = !rgb_first && swaps && from_rgb(), dst_swapped = !rgb_first && swaps && !from_rgb();
        const Bytes given = src_swapped ? EndsSwapped(source) : source;
        const Outcome expected{width > accepted ? status : kSuccess, dst_swapped ? EndsSwapped(result) : result};
        for (const int64_t target : Targets()) {
          hwy::SetSupportedTargetsForTest(target);
          for (const Flush flush : {Flush::kEnd, Flush::kStart}) {
            ASSERT_TRUE(Run(in, given, out, Args(rgb_first), flush) == expected)
                << hwy::TargetName(target) << ", " << width << " units, R first " << rgb_first;
          }
        }
      }
    }
  }
}

TEST_P(EveryKernel, GivesTheSameBytesInPlaceAtAnyPaddingAndWhereverTheBuffersOverlap) {
  const size_t units = kernel().unit_pixels == 1 ? 300 : 67, bands = 2;
  const Bytes source = AcceptedSource(units, bands);
  const std::vector<int64_t> targets = Targets();
  struct Case {
    int32_t in_pad, out_pad;
    bool rgb_first;
  };
  // A padding below 0 is none.
  for (const Case& c : {Case{0, 0, true}, {0, 0, false}, {3, 1, true}, {-2, 5, false}, {2, 2, true}, {1, -3, true}}) {
    const RowArgs args = Args(c.rgb_first);
    const Frame in = In(units, bands, c.in_pad), out = Out(units, bands, c.out_pad);
    const Outcome apart = Run(In(units, bands), source, Out(units, bands), args);
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
    const Status status = RunKernel(kernel(), from, src.data(), out, dst.data(), Args());
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
  EXPECT_EQ(RunKernel(kernel(), in, src.data(), out, dst.data(), Args()), kInvalidParameter);
}

// The n-th frame of a sweep: all values of a pixel's first three bytes, a fourth running along; of video every luma
// with every pair of chromas.
Bytes SweptFrame(const Frame& frame, size_t n, size_t band_rows) {
  Bytes bytes(frame.KernelBytes());
  const auto width = static_cast<size_t>(frame.width), pixels = width * frame.Rows();
  const size_t pixel_bytes = frame.space->bits / 8;
  const bool video = frame.space->rule != SizeRule::kNone;
  for (size_t i = 0; i < pixels; ++i) {
    if (video) {
      const size_t x = i % width, y = i / width, at_x = y / band_rows * width + x;
      const VideoSamples at = VideoSamplesOf(frame.space->id, width, frame.Rows(), x, y);
      bytes[at.y] = uint8_t(at_x), bytes[at.u] = uint8_t(n), bytes[at.v] = uint8_t(at_x / 256);
    } else {
      const size_t all = n * pixels + i, first = all >> 16, second = all >> 8;
      const uint8_t pixel[] = {uint8_t(first), uint8_t(second), uint8_t(all),
                               uint8_t(first + 3 * (second % 256) + 5 * all)};
      std::copy_n(pixel, pixel_bytes, &bytes[i * pixel_bytes]);
    }
  }
  return bytes;
}

// Every step-th frame of the sweep, converted for every instruction set as its model converts it; the hash of it all is
// the one on record.
void EveryKernel::ExpectModelAndRecord(const std::string& name, int32_t black_param, size_t step) {
  const size_t band_rows = kernel().band_rows, bands = band_rows > 1 ? 2 : 1;
  const size_t units = 65536 / bands / kernel().unit_pixels;
  const Frame in = In(units, bands), out = Out(units, bands);
  const auto width = static_cast<size_t>(in.width), pixels = width * in.Rows();
  RowArgs args = Args();
  args.black_param = black_param;
  uLong hash = 0;
  for (size_t n = 0; n < (from_rgb() ? (size_t{1} << 24) / pixels : 256); n += step) {
    const Bytes source = SweptFrame(in, n, band_rows);
    ModelFrame model = FrameByModel(kernel().name, source, width, in.Rows(), {black_param, args.table});
    hash = crc32(hash, model.bytes.data(), static_cast<uInt>(model.bytes.size()));
    model.refused.push_back(pixels);
    for (const int64_t target : Targets()) {
      hwy::SetSupportedTargetsForTest(target);
      Bytes made(model.bytes.size());
      if (bands > 1) {
        ASSERT_EQ(RunKernel(kernel(), in, source.data(), out, made.data(), args), kSuccess);
      } else {
        if (kernel().prepare) kernel().prepare(args);
        size_t begin = 0;  // it is set going again behind every pixel that it refuses
        for (const size_t stop : model.refused) {
          if (begin >= pixels) break;
          const size_t at = begin / kernel().unit_pixels;
          const Status status =
              kernel().row(&source[at * kernel().src_bytes], &made[at * kernel().dst_bytes], pixels - begin, args);
          ASSERT_EQ(status, stop < pixels ? kIccTagNotFound : kSuccess) << "from pixel " << begin << " of " << n;
          begin = stop + 1;
        }
      }
      const auto differs = std::ranges::mismatch(made, model.bytes);
      ASSERT_TRUE(differs.in1 == made.end())
          << name << ", " << hwy::TargetName(target) << ", frame " << n << ": byte " << differs.in1 - made.begin()
          << " is " << int{*differs.in1} << ", of the model " << int{*differs.in2};
    }
  }
  std::map<std::string, uLong> recorded;
  std::ifstream file(QV_TEST_DATA "/kernel_hashes.txt");
  uLong value = 0;
  for (std::string of; file >> of >> std::hex >> value;) recorded[of] = value;
  EXPECT_EQ(recorded[name], hash) << "the line to add: " << name << ' ' << std::hex << hash;
}

TEST_P(EveryKernel, GivesTheOutputOfItsModelAndOnRecordForEveryInput) {
  if (GetParam().record) GTEST_SKIP() << "the models know the plain settings only";
  const std::string name = kernel().name;
  if (&kernel() != &RGBToCMYK && &kernel() != &CMYKToRGB) return ExpectModelAndRecord(name, 175, 1);
  // 3500: a negative factor of grey. 24500: some removals leave the 32-bit range. The extremes: nearly all do.
  const std::pair<int32_t, size_t> params[] = {{175, 1},    {1000, 1},       {3000, 1},      {-1, 1},
                                               {0, 17},     {500, 17},       {-1000, 17},    {3500, 17},
                                               {24500, 17}, {INT32_MAX, 17}, {INT32_MIN, 17}};
  for (const auto& [param, step] : params) ExpectModelAndRecord(name + "/" + std::to_string(param), param, step);
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryKernel, testing::ValuesIn(CatalogueKernels()), [](const auto& tested) {
  return tested.param.kernel->name + std::string(tested.param.record ? "BySettings" : "");
});

}  // namespace
