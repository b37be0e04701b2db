// The luma-chroma, CIE and hue kernels against slow models: the pixel formulas for every input that there is, the
// layouts of video over frames of many kinds and sizes, and facts worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <future>
#include <span>
#include <string>
#include <vector>

#include "qvclr/frame.h"
#include "qvclr/kernel.h"
#include "reference/cie_model.h"
#include "reference/hue_model.h"
#include "reference/luma_chroma_model.h"
#include "support/converters.h"
#include "support/guarded.h"

namespace {
using namespace qv;
using namespace qv_test;
using Bytes = std::vector<uint8_t>;
constexpr uint8_t kUntouched = 0xCC;

const Kernel* KernelOf(uint32_t space, bool to_rgb) {
  return to_rgb ? FindSpace(space)->to_rgb : FindSpace(space)->from_rgb;
}

void SwapEnds(std::span<uint8_t> rgb) {
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) std::swap(rgb[i], rgb[i + 2]);
}

// ---- The pixel formulas

template <auto kModel>
bool Always(const uint8_t* src, uint8_t* dst) {
  kModel(src, dst);
  return true;
}

struct Formula {
  const char* name;
  uint32_t space;
  bool to_rgb;
  bool (*model)(const uint8_t* src, uint8_t* dst);  // false: refused
};
void PrintTo(const Formula& formula, std::ostream* out) { *out << formula.name; }

const Formula kFormulas[] = {
    {"RGBToYCbCr", CS_YCBCR, false, Always<YCbCrFromRgb>},
    {"YCbCrToRGB", CS_YCBCR, true, Always<YCbCrToRgb>},
    {"RGBToYIQ", CS_YIQ, false, Always<YiqFromRgb>},
    {"YIQToRGB", CS_YIQ, true, Always<YiqToRgb>},
    {"RGBToYUV", CS_YUV, false, Always<YuvFromRgb>},
    {"YUVToRGB", CS_YUV, true, Always<YuvToRgb>},
    {"RGBToXYZ", CS_XYZ, false, Always<XyzFromRgb>},
    {"XYZToRGB", CS_XYZ, true, Always<XyzToRgb>},
    {"RGBToLab", CS_LAB, false, Always<LabFromRgb>},
    {"LabToRGB", CS_LAB, true, Always<LabToRgb>},
    {"RGBToHSV", CS_HSV, false, Always<HsvFromRgb>},
    {"HSVToRGB", CS_HSV, true, Always<HsvToRgb>},
    {"RGBToHLS", CS_HLS, false, Always<HlsFromRgb>},
    {"HLSToRGB", CS_HLS, true, HlsToRgb},
    {"RGBToHSI", CS_HSI, false, Always<HsiFromRgb>},
    {"HSIToRGB", CS_HSI, true, Always<HsiToRgb>},
    {"RGBToCMYKProfile", CS_CMYK_PROFILE, false, Always<YccKFromRgb>},
    {"CMYKProfileToRGB", CS_CMYK_PROFILE, true, Always<YccKToRgb>},
};

constexpr size_t kWidth = 65536;

// All values of the first three bytes, the fourth running along.
std::array<uint8_t, 4> EveryPixel(size_t row, size_t x) {
  return {uint8_t(row), uint8_t(x / 256), uint8_t(x), uint8_t(row + 3 * (x / 256) + 5 * x)};
}

struct ModelRow {
  Bytes src, expected;
  std::vector<size_t> refused;  // ascending; their bytes stay untouched
};

ModelRow RowOfModel(const Formula& formula, size_t src_bytes, size_t dst_bytes, size_t row) {
  ModelRow made{Bytes(kWidth * src_bytes), Bytes(kWidth * dst_bytes, kUntouched), {}};
  for (size_t x = 0; x < kWidth; ++x) {
    const auto pixel = EveryPixel(row, x);
    std::copy_n(pixel.begin(), src_bytes, &made.src[x * src_bytes]);
    if (!formula.model(pixel.data(), &made.expected[x * dst_bytes])) made.refused.push_back(x);
  }
  return made;
}

// The kernel over a row, set going again behind every pixel that it refuses.
std::string RunOverRow(const Kernel& kernel, const ModelRow& row, const RowArgs& args, Bytes& dst) {
  std::vector<size_t> stops = row.refused;
  stops.push_back(kWidth);
  size_t begin = 0;
  for (const size_t stop : stops) {
    const Status status =
        kernel.row(&row.src[begin * kernel.src_bytes], &dst[begin * kernel.dst_bytes], kWidth - begin, args);
    if (status != (stop < kWidth ? Status{-37} : kSuccess)) {
      return "from pixel " + std::to_string(begin) + ": status " + std::to_string(static_cast<int32_t>(status));
    }
    const size_t some_further = std::min(kWidth, stop + 64);
    for (size_t i = stop * kernel.dst_bytes; i < some_further * kernel.dst_bytes; ++i) {
      if (dst[i] != kUntouched) return "wrote behind the refused pixel " + std::to_string(stop);
    }
    begin = stop + 1;
    if (begin >= kWidth) break;
  }
  return "";
}

// Empty when kernel and model agree for the given values of the first byte, in both byte orders.
std::string Difference(const Formula& formula, size_t from, size_t to) {
  const Kernel& kernel = *KernelOf(formula.space, formula.to_rgb);
  for (size_t y = from; y < to; ++y) {
    ModelRow row = RowOfModel(formula, kernel.src_bytes, kernel.dst_bytes, y);
    for (const bool rgb_first : {true, false}) {
      if (!rgb_first) SwapEnds(formula.to_rgb ? row.expected : row.src);
      RowArgs args{.rgb_first = rgb_first};
      if (kernel.prepare) kernel.prepare(args);
      Bytes dst(row.expected.size(), kUntouched);
      const std::string where = std::string(rgb_first ? "R first" : "B first") + ", first byte " + std::to_string(y);
      if (const std::string fault = RunOverRow(kernel, row, args, dst); !fault.empty()) return where + ", " + fault;
      if (dst == row.expected) continue;
      const auto at = static_cast<size_t>(std::ranges::mismatch(dst, row.expected).in1 - dst.begin());
      const auto pixel = EveryPixel(y, at / kernel.dst_bytes);
      return where + ": " + testing::PrintToString(std::vector<int>(pixel.begin(), pixel.end())) + ", byte " +
             std::to_string(at % kernel.dst_bytes) + " is " + std::to_string(dst[at]) + ", of the model " +
             std::to_string(row.expected[at]);
    }
  }
  return "";
}

class PixelFormula : public testing::TestWithParam<Formula> {};

TEST_P(PixelFormula, HoldsForEveryInput) {
  const Formula& formula = GetParam();
  ASSERT_TRUE(KernelOf(formula.space, formula.to_rgb));
  auto half = std::async(std::launch::async, [&] { return Difference(formula, 0, 128); });
  EXPECT_EQ(Difference(formula, 128, 256), "");
  EXPECT_EQ(half.get(), "");
}

INSTANTIATE_TEST_SUITE_P(Models, PixelFormula, testing::ValuesIn(kFormulas),
                         [](const auto& tested) { return std::string(tested.param.name); });

// ---- The layouts of video

enum class Pattern : uint8_t { kRandom, kExtremes, kFlat, kGradient, kCheckerboard };
constexpr Pattern kPatterns[] = {Pattern::kRandom, Pattern::kExtremes, Pattern::kFlat, Pattern::kGradient,
                                 Pattern::kCheckerboard};

Bytes Drawn(Pattern pattern, size_t size, size_t line, uint64_t seed) {
  Bytes bytes = RandomBytes(size, seed);
  const std::array<uint8_t, 3> flat = {bytes[0], bytes[1], bytes[2]};
  for (size_t i = 0; i < size; ++i) {
    const size_t x = i % line, y = i / line;
    switch (pattern) {
      case Pattern::kRandom: break;
      case Pattern::kExtremes: bytes[i] = bytes[i] < 128 ? 0 : 255; break;
      case Pattern::kFlat: bytes[i] = flat[i % 3]; break;
      case Pattern::kGradient: bytes[i] = uint8_t(x * 255 / line + y * 16); break;
      case Pattern::kCheckerboard: bytes[i] = (x / 3 + y) % 2 == 0 ? 0 : 255; break;
    }
  }
  return bytes;
}

// The lines laid into a frame, between paddings that tell when they are written.
Bytes Padded(const Bytes& packed, const Frame& frame) {
  Bytes bytes(frame.KernelBytes(), kUntouched);
  const size_t line = frame.space->planar ? packed.size() : packed.size() / frame.Rows();
  for (size_t y = 0; y * line < packed.size(); ++y) {
    std::copy_n(&packed[y * line], line, &bytes[y * (line + frame.Padding())]);
  }
  return bytes;
}

class VideoLayout : public testing::TestWithParam<std::tuple<uint32_t, bool>> {
 protected:
  const Space& space() const { return *FindSpace(std::get<0>(GetParam())); }
  bool to_rgb() const { return std::get<1>(GetParam()); }
  int32_t WidthStep() const { return space().rule == SizeRule::kWidthEven ? 2 : space().planar ? 4 : 8; }
  size_t SourceBits() const { return to_rgb() ? space().bits : 24; }

  void SetUp() override { ASSERT_TRUE(KernelOf(space().id, to_rgb())); }

  // In both byte orders. The source has no padding; the two numbers are what the frames are given.
  void ExpectModel(const Bytes& source, int32_t width, int32_t height, int32_t in_pad = 0, int32_t out_pad = 0) const {
    const auto columns = static_cast<size_t>(width), rows = static_cast<size_t>(height);
    Bytes src = source;
    Bytes dst = to_rgb() ? VideoToRgb(space().id, src, columns, rows) : VideoFromRgb(space().id, src, columns, rows);
    for (const bool rgb_first : {true, false}) {
      if (!rgb_first) SwapEnds(to_rgb() ? dst : src);
      const Space* rgb = FindSpace(rgb_first ? CS_RGB : CS_BGR);
      const Frame in{to_rgb() ? &space() : rgb, width, height, in_pad};
      const Frame out{to_rgb() ? rgb : &space(), width, height, out_pad};
      const Bytes expected = Padded(dst, out);
      GuardedBuffer from(Padded(src, in)), to(Bytes(expected.size(), kUntouched));
      from.MakeReadOnly();
      const Kernel& kernel = *KernelOf(space().id, to_rgb());
      ASSERT_EQ(RunKernel(kernel, in, from.data(), out, to.data(), {.rgb_first = rgb_first}), kSuccess);
      const auto at = std::ranges::mismatch(to.bytes(), expected);
      ASSERT_TRUE(at.in1 == to.bytes().end())
          << width << " x " << height << ", paddings " << in_pad << ", " << out_pad << ": byte "
          << at.in1 - to.bytes().begin() << " is " << int{*at.in1} << ", of the model " << int{*at.in2};
    }
  }
};

TEST_P(VideoLayout, HoldsForFramesOfManyKinds) {
  uint64_t seed = 1;
  for (int32_t width = WidthStep(); width <= 64; width += WidthStep()) {
    for (const int32_t height : {1, 2, 3}) {
      const int32_t rows = space().planar ? 4 * height : height;
      const auto pixels = static_cast<size_t>(width) * static_cast<size_t>(rows);
      for (const Pattern pattern : kPatterns) {
        const size_t size = pixels * SourceBits() / 8, line = size / static_cast<size_t>(rows);
        const Bytes source = Drawn(pattern, size, line, ++seed);
        for (int32_t pad = 0; pad <= 5; ++pad) {
          ASSERT_NO_FATAL_FAILURE(ExpectModel(source, width, rows, pad, (5 * pad + width / 2) % 6)) << int(pattern);
        }
      }
    }
  }
}

// Every luma with every pair of chromas, or every colour beside its neighbours.
TEST_P(VideoLayout, HoldsForEveryPixel) {
  const size_t rows = to_rgb() && !space().planar ? 1 : 4, frames = to_rgb() ? 256 : 64;
  Bytes source(kWidth * rows * SourceBits() / 8);
  for (size_t frame = 0; frame < frames; ++frame) {
    for (size_t y = 0; y < rows; ++y) {
      for (size_t x = 0; x < kWidth; ++x) {
        if (to_rgb()) {
          const VideoSamples at = VideoSamplesOf(space().id, kWidth, rows, x, y);
          source[at.y] = uint8_t(x);
          source[at.u] = uint8_t(frame);
          source[at.v] = uint8_t(x / 256);
        } else {
          std::copy_n(EveryPixel(4 * frame + y, x).begin(), 3, &source[(y * kWidth + x) * 3]);
        }
      }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectModel(source, int32_t{kWidth}, static_cast<int32_t>(rows))) << "frame " << frame;
  }
}

INSTANTIATE_TEST_SUITE_P(Models, VideoLayout,
                         testing::Combine(testing::Values(CS_YUY2, CS_UYVY, CS_Y41P, CS_YVU9), testing::Bool()),
                         [](const auto& tested) {
                           return std::string(FindSpace(std::get<0>(tested.param))->name).substr(3) +
                                  (std::get<1>(tested.param) ? "ToRGB" : "FromRGB");
                         });

// ---- What is worked out by hand

TEST(FormulaFacts, AreGivenByKernels) {
  struct Fact {
    const char* why;
    uint32_t space;
    bool to_rgb;
    Bytes src, dst;
  };
  const Fact kFacts[] = {
      {"16 is black, 235 is white", CS_YUY2, true, {16, 128, 235, 128}, {0, 0, 0, 255, 255, 255}},
      {"half a step off every channel", CS_YUY2, false, {0, 0, 0, 0, 0, 0}, {15, 128, 15, 128}},
      {"the chromas stand in front", CS_UYVY, true, {128, 16, 128, 235}, {0, 0, 0, 255, 255, 255}},
      {"half a step off every channel", CS_UYVY, false, {0, 0, 0, 0, 0, 0}, {128, 15, 128, 15}},
      {"127.5 is clamped to 127, -20.7 truncated", CS_YCBCR, false, {0, 0, 255}, {29, 127, 236}},
      {"chroma 0 is grey", CS_YCBCR, true, {77, 0, 0}, {77, 77, 77}},
      {"255 of 263, and the middles of I and Q", CS_YIQ, false, {255, 255, 255}, {247, 128, 128}},
      {"the rows of the matrix end below 1", CS_XYZ, false, {255, 255, 255}, {219, 242, 249}},
      {"-138.75, 384.25 and 5.49", CS_XYZ, true, {0, 255, 0}, {0, 255, 5}},
      {"white has lightness 100", CS_LAB, false, {255, 255, 255}, {255, 0, 0}},
      {"black has lightness 0", CS_LAB, false, {0, 0, 0}, {0, 0, 0}},
      {"the lightness of white", CS_LAB, true, {255, 0, 0}, {255, 255, 255}},
      {"the lightness of black", CS_LAB, true, {0, 0, 0}, {0, 0, 0}},
      {"red begins the turn", CS_HSV, false, {255, 0, 0}, {0, 255, 255}},
      {"240 of 360 degrees", CS_HSV, false, {0, 0, 255}, {170, 255, 255}},
      {"360 degrees are 0", CS_HSV, true, {255, 255, 255}, {255, 0, 0}},
      {"grey has no hue", CS_HLS, false, {128, 128, 128}, {0, 128, 0}},
      {"a third of the turn", CS_HLS, false, {0, 255, 0}, {85, 128, 255}},
      {"grey without a hue", CS_HLS, true, {0, 128, 0}, {128, 128, 128}},
      {"no angle, reflected", CS_HSI, false, {128, 128, 128}, {128, 255, 0}},
      {"nor a saturation", CS_HSI, false, {0, 1, 1}, {0, 255, 0}},
      {"no colour without saturation", CS_HSI, true, {90, 200, 0}, {90, 90, 90}},
      {"black is K alone", CS_CMYK_PROFILE, false, {0, 0, 0}, {255, 128, 128, 255}},
      {"K and no ink", CS_CMYK_PROFILE, true, {255, 128, 128, 100}, {155, 155, 155}},
      {"ink 155 and K 100 cover 155 - 61 + 100", CS_CMYK_PROFILE, true, {100, 128, 128, 100}, {61, 61, 61}},
  };
  for (const Fact& fact : kFacts) {
    const Kernel* kernel = KernelOf(fact.space, fact.to_rgb);
    ASSERT_TRUE(kernel) << fact.space;
    RowArgs args;
    if (kernel->prepare) kernel->prepare(args);
    Bytes dst(fact.dst.size());
    ASSERT_EQ(kernel->row(fact.src.data(), dst.data(), kernel->unit_pixels, args), kSuccess) << fact.why;
    EXPECT_EQ(dst, fact.dst) << fact.space << ": " << fact.why;
  }
}

TEST(FormulaFacts, OfTheGreyPixelWithAHue) {
  const uint8_t src[] = {0, 10, 0, 10, 128, 0, 0, 20, 0};
  Bytes dst(9, kUntouched);
  const Kernel* kernel = KernelOf(CS_HLS, true);
  ASSERT_TRUE(kernel);
  EXPECT_EQ(static_cast<int32_t>(kernel->row(src, dst.data(), 3, {})), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_EQ(dst, Bytes({10, 10, 10, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC}));
}

// The running blend gives every later row more weight: three black rows and then a blue one.
TEST(FormulaFacts, OfThePlanesOfYvu9) {
  Bytes rgb(48, 0);
  for (size_t x = 0; x < 4; ++x) rgb[36 + 3 * x + 2] = 255;
  const Frame in{FindSpace(CS_RGB), 4, 4, 0}, out{FindSpace(CS_YVU9), 4, 4, 0};
  ASSERT_TRUE(out.space->from_rgb);
  GuardedBuffer src(rgb), dst(18);
  ASSERT_EQ(RunKernel(*out.space->from_rgb, in, src.data(), out, dst.data(), {}), kSuccess);
  // Blue: V = 109.8, U = 240.06. (128 + 4 x 109) / 5 and (128 + 4 x 240) / 5; V lies in front of U.
  const Bytes expected = {15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 40, 40, 40, 40, 112, 217};
  EXPECT_EQ(Bytes(dst.data(), dst.data() + 18), expected);
}

}  // namespace
