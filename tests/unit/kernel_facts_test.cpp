// Pixels worked out by hand, and rows that the catalogue of kernels does not hold.
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>

#include "qvclr/frame.h"
#include "qvclr/kernels/kernels.h"
#include "qvclr/ycbcr_tables.h"
#include "qvclr/yuv_settings.h"
#include "support/bytes.h"

namespace {

using namespace qv;
using namespace qv_test;

TEST(Kernels, GiveWhatIsWorkedOutByHand) {
  const struct {
    const char* why;
    const Kernel& kernel;
    Bytes src, dst;
    int32_t param = 175;
  } kFacts[] = {
      {"17.5 % of the smallest complement, truncated, is black", RGBToCMYK, {0, 0, 0}, {255, 255, 255, 44}},
      {"white takes no ink", RGBToCMYK, {255, 255, 255}, {0, 0, 0, 0}},
      {"black takes the place of all ink", RGBToCMYK, {0, 0, 0}, {0, 0, 0, 255}, 1000},
      {"255 - 61965 and 765, low bytes", RGBToCMYK, {0, 0, 0}, {242, 242, 242, 253}, 3000},
      {"0.175^4 is below 1/256", CMYKToRGB, {10, 20, 30, 255}, {245, 235, 225}},
      {"black stops at the largest ink", CMYKToRGB, {100, 100, 100, 50}, {0, 0, 0}, 1000},
      {"0.25^4 is 1/256", CMYKToRGB, {0, 0, 0, 10}, {245, 245, 245}, 250},
      {"a quarter of the black where half is grey", CMYKToRGB, {0, 127, 0, 40}, {245, 118, 245}, 250},
      {"16 is black, 235 is white", YUY2ToRGB, {16, 128, 235, 128}, {0, 0, 0, 255, 255, 255}},
      {"half a step off every channel", RGBToYUY2, {0, 0, 0, 0, 0, 0}, {15, 128, 15, 128}},
      {"the chromas stand in front", UYVYToRGB, {128, 16, 128, 235}, {0, 0, 0, 255, 255, 255}},
      {"half a step off every channel", RGBToUYVY, {0, 0, 0, 0, 0, 0}, {128, 15, 128, 15}},
      {"127.5 is clamped to 127, -20.7 truncated", RGBToYCbCr, {0, 0, 255}, {29, 127, 236}},
      {"chroma 0 is grey", YCbCrToRGB, {77, 0, 0}, {77, 77, 77}},
      {"255 of 263, and the middles of I and Q", RGBToYIQ, {255, 255, 255}, {247, 128, 128}},
      {"the rows of the matrix end below 1", RGBToXYZ, {255, 255, 255}, {219, 242, 249}},
      {"-138.75, 384.25 and 5.49", XYZToRGB, {0, 255, 0}, {0, 255, 5}},
      {"white has lightness 100", RGBToLab, {255, 255, 255}, {255, 0, 0}},
      {"the lightness of white", LabToRGB, {255, 0, 0}, {255, 255, 255}},
      {"the lightness of black", LabToRGB, {0, 0, 0}, {0, 0, 0}},
      {"240 of 360 degrees", RGBToHSV, {0, 0, 255}, {170, 255, 255}},
      {"360 degrees are 0", HSVToRGB, {255, 255, 255}, {255, 0, 0}},
      {"a third of the turn", RGBToHLS, {0, 255, 0}, {85, 128, 255}},
      {"grey without a hue", HLSToRGB, {0, 128, 0}, {128, 128, 128}},
      {"no angle, reflected", RGBToHSI, {128, 128, 128}, {128, 255, 0}},
      {"nor a saturation", RGBToHSI, {0, 1, 1}, {0, 255, 0}},
      {"no colour without saturation", HSIToRGB, {90, 200, 0}, {90, 90, 90}},
      {"black is K alone", RGBToCMYKProfile, {0, 0, 0}, {255, 128, 128, 255}},
      {"ink 155 and K 100 cover 155 - 61 + 100", CMYKProfileToRGB, {100, 128, 128, 100}, {61, 61, 61}},
  };
  for (const auto& fact : kFacts) {
    RowArgs args{.black_param = fact.param};
    if (fact.kernel.prepare) fact.kernel.prepare(args);
    Bytes dst(fact.dst.size());
    ASSERT_EQ(fact.kernel.row(fact.src.data(), dst.data(), fact.kernel.unit_pixels, args), kSuccess) << fact.why;
    EXPECT_EQ(dst, fact.dst) << fact.kernel.name << ": " << fact.why;
  }
  // The running blend gives every later row more weight: three black rows and then a blue one. Blue: V = 109.8,
  // U = 240.06. (128 + 4 x 109) / 5 and (128 + 4 x 240) / 5; V lies in front of U.
  Bytes rgb(48), yvu(18);
  for (size_t x = 0; x < 4; ++x) rgb[36 + 3 * x + 2] = 255;
  const Frame in{FindSpace(CS_RGB), 4, 4, 0}, out{FindSpace(CS_YVU9), 4, 4, 0};
  ASSERT_EQ(RunKernel(RGBToYVU9, in, rgb.data(), out, yvu.data(), {}), kSuccess);
  EXPECT_EQ(yvu, (Bytes{15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 40, 40, 40, 40, 112, 217}));
}

template <auto kLines>
Status LinesRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs&) {
  kLines(src, dst, width, SharedYCbCrTables());
  return kSuccess;
}

// What converters do beside the catalogue: spans and offsets that vectors take, the greatest of these and beyond them;
// and lines of profile CMYK on their way to the engine.
TEST(Kernels, GiveTheSameBytesOnEveryInstructionSetWhateverTheSettings) {
  const Bytes luma = RandomBytes(256);
  std::vector<std::pair<Kernel, YuvSettings>> rows;
  for (const Space1Params& params :
       {Space1Params{.nUSpan = 224, .nUOffset = 112, .nVOffset = 2047, .nLumaSpan = 219},
        Space1Params{
            .nUSpan = 2047, .nVSpan = 2047, .pLumaTable = luma.data(), .nLumaTableBytes = 256, .nLumaSpan = 2047},
        Space1Params{.nUSpan = 40000, .nVOffset = 40000}, Space1Params{.nVSpan = 5, .nLumaSpan = UINT32_MAX}}) {
    rows.emplace_back(YUVToRGB, MakeYuvSettings(params));
    rows.emplace_back(RGBToYUV, MakeYuvSettings(params));
  }
  rows.emplace_back(Kernel{"CmykFromProfile", LinesRow<CmykFromProfilePixels>, 4, 4}, YuvSettings());
  rows.emplace_back(Kernel{"ProfileFromCmyk", LinesRow<ProfilePixelsFromCmyk>, 4, 4}, YuvSettings());
  constexpr size_t kWidth = 1000;
  for (const auto& [kernel, settings] : rows) {
    const RowArgs args{.record = &settings};
    const Bytes source = EdgeBytes(kWidth * kernel.src_bytes, 1);
    Bytes one_by_one(kWidth * kernel.dst_bytes);
    for (size_t x = 0; x < kWidth; ++x) {
      ASSERT_EQ(kernel.row(&source[x * kernel.src_bytes], &one_by_one[x * kernel.dst_bytes], 1, args), kSuccess);
    }
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
      hwy::SetSupportedTargetsForTest(target);
      Bytes row(one_by_one.size());
      ASSERT_EQ(kernel.row(source.data(), row.data(), kWidth, args), kSuccess);
      EXPECT_TRUE(row == one_by_one) << kernel.name << ", " << hwy::TargetName(target);
    }
    hwy::SetSupportedTargetsForTest(0);
  }
}

// A cell's two corners, by number, are told apart from all other nodes.
TEST(Kernels, FindTheNodesOfTables) {
  constexpr uint8_t kLower[] = {200, 0xFF, 0x7F}, kUpper[] = {101, 0x00, 0x80};
  const struct {
    const char* why;
    const Kernel& kernel;
    uint8_t src[4];
    size_t lower, upper;
    Bytes dst;
  } kFacts[] = {
      {"a node", EmuRGBToLab, {8, 8, 8}, 1123, 1123, {200, 0xFF, 0x7F}},
      {"the origin of a and b", EmuLabToRGB, {8, 0x80, 0x80}, 1089, 1089, {200, 0xFF, 0x7F}},
      {"ink and black in between", EmuCMYKToRGB, {1, 0, 0, 239}, 14, 4913 + 15, {150, 127, 127}},
      {"a and b are signed", EmuRGBToLab, {0, 9, 0}, 33, 66, {150, 255, 255}},
      {"the end of an ink", EmuCMYKToRGB, {250, 0, 0, 0}, 15 * 4913, 0, {150, 127, 127}},
      {"the end of blue", EmuRGBToLab, {0, 16, 249}, 97, 66, {150, 255, 255}},
      {"the end of L", EmuLabToRGB, {255, 0x80, 0x80}, 31 * 1089, 0, {150, 127, 127}},
      {"the ends of a and b", EmuLabToRGB, {0, 127, 121}, 31 * 33 + 31, 32 * 33 + 32, {150, 127, 127}},
  };
  for (const auto& fact : kFacts) {
    Bytes table(3 * 17 * 17 * 17 * 17), dst(3);
    std::ranges::copy(kUpper, &table[3 * fact.upper]);
    std::ranges::copy(kLower, &table[3 * fact.lower]);
    ASSERT_EQ(fact.kernel.row(fact.src, dst.data(), 1, {.table = table.data()}), kSuccess);
    EXPECT_EQ(dst, fact.dst) << fact.kernel.name << ", " << fact.why;
  }
}

}  // namespace
