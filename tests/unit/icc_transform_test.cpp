// Transforms that the library evaluates itself against the engine's own, and the transforms that converters share.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <bit>
#include <functional>
#include <set>
#include <thread>

#include "base/memory.h"
#include "qvclr/icc_shared.h"
#include "qvclr/library.h"
#include "support/converters.h"
#include "support/icc_reference.h"

namespace {

using namespace qv;
using namespace qv_test;

using Side = qv_test::IccSide;

Bytes Installed(const char* name) { return Contents(std::filesystem::path(QV_PROFILES) / name); }

// Each channel by a curve of its own. `red` replaces the red primary.
Bytes UnevenRgbProfile(const cmsCIEXYZ* red = nullptr) {
  const cmsCIExyY white = {0.3127, 0.329, 1};
  const cmsCIExyYTRIPLE primaries = {{0.7, 0.29, 1}, {0.2, 0.75, 1}, {0.14, 0.05, 1}};
  cmsToneCurve* curves[3];
  for (int c = 0; c < 3; ++c) curves[c] = cmsBuildGamma(nullptr, 1 + 0.7 * c);
  cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsFreeToneCurveTriple(curves);
  if (red) cmsWriteTag(profile, cmsSigRedColorantTag, red);
  return SavedProfile(profile);
}

struct DeleteTransform {
  void operator()(IccTransform* transform) const { IccTransform::Delete(transform); }
};
using TransformPtr = std::unique_ptr<IccTransform, DeleteTransform>;

TransformPtr MakeTransform(const Side& from, const Bytes& from_profile, const Side& to, const Bytes& to_profile) {
  IccTransform* made = nullptr;
  EXPECT_EQ(IccTransform::Make({FindSpace(from.space), from_profile}, {FindSpace(to.space), to_profile}, {}, &made),
            kSuccess);
  return TransformPtr(made);
}

// On every instruction set, apart and in place; the length leaves a part of a block.
void ExpectRuns(const std::function<void(const uint8_t* src, uint8_t* dst)>& run, const Bytes& source,
                const Bytes& expected) {
  for (const int64_t instructions : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(instructions);
    Bytes target(expected.size());
    run(source.data(), target.data());
    EXPECT_TRUE(target == expected) << hwy::TargetName(instructions);
    if (source.size() != target.size()) continue;
    target = source;
    run(target.data(), target.data());
    EXPECT_TRUE(target == expected) << hwy::TargetName(instructions) << " in place";
  }
  hwy::SetSupportedTargetsForTest(0);
}
void ExpectEnginesBytes(const TransformPtr& transform, const Side& from, const Bytes& from_profile, const Side& to,
                        const Bytes& to_profile, const Bytes& source) {
  ExpectRuns([&](const uint8_t* src, uint8_t* dst) { transform->Run(src, dst, source.size() / from.pixel); }, source,
             ConvertedByEngine(from, from_profile, to, to_profile, source));
}
// The rows of a grid of two nodes against its definition; gives what that makes.
Bytes ExpectRows(const uint16_t* colours, size_t inputs, uint32_t slack, const Bytes& source) {
  IccGrid grid{.inputs = inputs, .outputs = 3, .nodes = 2, .slack = slack};
  SteepCells steep{};
  EXPECT_EQ(FillGrid(colours, &grid, &steep), kSuccess);
  for (size_t i = 0; i < steep.count; ++i) MarkCell(&grid, steep.nodes[i]);
  const size_t pixels = source.size() / inputs;
  Bytes expected(3 * pixels);
  for (size_t i = 0; i < pixels; ++i) GridPixel(grid, &source[inputs * i], &expected[3 * i]);
  ExpectRuns([&](const uint8_t* src, uint8_t* dst) { GridRow(grid, src, dst, pixels); }, source, expected);
  EmptyGrid(&grid);
  return expected;
}

TEST(IccTransform, GivesTheEnginesBytes) {
  const Bytes srgb = BuiltInProfile(kRgb), cmyk = BuiltInProfile(kCmyk), lab = BuiltInProfile(kLab);
  const Bytes cmy = BuiltInProfile(kCmy), adobe = Installed("compatibleWithAdobeRGB1998.icc"),
              uneven = UnevenRgbProfile();
  const struct {
    const Side &from, &to;
    const Bytes &from_profile, &to_profile;
  } kPairs[] = {{kRgb, kCmyk, srgb, cmyk},
                {kBgr, kCmyk, adobe, cmyk},
                {kRgb, kLab, srgb, lab},
                {kLab, kRgb, lab, adobe},
                {kLab, kBgr, lab, srgb},
                {kRgb, kCmy, srgb, cmy},
                {kCmy, kRgb, cmy, srgb},
                {kCmyk, kRgb, cmyk, srgb},
                {kCmyk, kBgr, cmyk, adobe},
                {kCmyk, kCmyk, cmyk, cmyk},
                {kLab, kRgb, Installed("ITULab.icc"), srgb},
                {kRgb, kBgr, srgb, srgb},
                {kBgr, kRgb, adobe, srgb},
                {kRgb, kBgr, uneven, uneven},
                {kRgb, kBgr, uneven, adobe},
                {kBgr, kRgb, srgb, uneven}};
  for (const auto& pair : kPairs) {
    SCOPED_TRACE(testing::Message() << pair.from.space << " to " << pair.to.space);
    constexpr size_t kPixels = 300007;
    Bytes source = RandomBytes(pair.from.pixel * kPixels);
    for (size_t i = 0; i < source.size() / 2; ++i) {  // ends and nodes
      if (i % 3 == 0) source[i] = static_cast<uint8_t>(source[i] % 18 * 15);
    }
    const TransformPtr transform = MakeTransform(pair.from, pair.from_profile, pair.to, pair.to_profile);
    ASSERT_TRUE(transform && !transform->RunsInEngine());
    ExpectEnginesBytes(transform, pair.from, pair.from_profile, pair.to, pair.to_profile, source);
  }
}

// Neighbouring nodes at opposite ends, where the engine's own sums overflow; and a matrix beyond 16 bits.
TEST(IccTransform, LeavesWildNumbersToTheEngine) {
  cmsHPROFILE profile = OpenProfile(BuiltInProfile(kLab));
  auto* stage = cmsPipelineGetPtrToFirstStage(static_cast<cmsPipeline*>(cmsReadTag(profile, cmsSigAToB0Tag)));
  while (stage && cmsStageType(stage) != cmsSigCLutElemType) stage = cmsStageNext(stage);
  const auto alternate = [](const cmsUInt16Number* in, cmsUInt16Number* out, void*) -> cmsInt32Number {
    for (int i = 0; i < 3; ++i) out[i] = (in[0] / 2000 + in[1] / 2000 + in[2] / 2000) % 2 == 0 ? 0 : 65535;
    return TRUE;
  };
  ASSERT_TRUE(stage && cmsStageSampleCLut16bit(stage, alternate, nullptr, 0));
  const Bytes wild = SavedProfile(profile), srgb = BuiltInProfile(kRgb), source = RandomBytes(3 * 10000);
  const cmsCIEXYZ strong_red = {1.5, 0.1, 0.1};
  for (const auto& [from, from_profile] : {std::pair(kLab, wild), std::pair(kBgr, UnevenRgbProfile(&strong_red))}) {
    const TransformPtr transform = MakeTransform(from, from_profile, kRgb, srgb);
    EXPECT_TRUE(transform->RunsInEngine());
    ExpectEnginesBytes(transform, from, from_profile, kRgb, srgb, source);
  }
}

// Colours of 16 bits next to the places where rounding turns: a sum just short of them is rounded up below the cell's
// first corner only.
TEST(IccGrid, RowsRoundAsTheDefinitionDoes) {
  constexpr uint8_t kPixel[] = {0, 128, 1, 0};  // rests of 0, 257 * 128 + 1, 257 and 0
  for (int byte = 80; byte < 180; byte += 5) {
    const int turn = 257 * byte - 128, first = turn + (byte % 2 == 0 ? 10 : -10);
    std::set<uint8_t> seen[2][2];
    for (int e = -3; e <= 3; ++e) {
      const int distance = 65535 * (turn - first) - 32768 + e;
      const int along_x = (distance % 257 + 385) % 257 - 128, along_y = (distance - along_x) / 257 - 128 * along_x;
      uint16_t colours[16][3];
      for (int i = 0; i < 16; ++i) {
        const int colour = first + (i & 4 ? along_x : 0) + (i & 2 ? along_y : 0);
        for (uint16_t& c : colours[i]) c = static_cast<uint16_t>(colour);
      }
      for (const size_t inputs : {3u, 4u}) {
        Bytes source;
        for (size_t i = 0; i < 64; ++i) source.insert(source.end(), std::end(kPixel) - inputs, std::end(kPixel));
        for (const uint32_t slack : {0u, 1u})
          seen[inputs - 3][slack].insert(ExpectRows(colours[0], inputs, slack, source)[0]);
      }
    }
    for (const auto& of_inputs : seen) {
      for (const auto& bytes : of_inputs) EXPECT_EQ(bytes.size(), 2u) << byte << ": no turn";
    }
  }
}

// The sums of steep cells overflow in the definition, as the engine's do, and would not in the rows.
TEST(IccGrid, RowsLeaveMarkedCellsToTheDefinition) {
  uint16_t colours[8][3];
  for (size_t i = 0; i < 8; ++i) std::ranges::fill(colours[i], std::popcount(i) % 2 == 0 ? 100 : 65300);
  for (const uint32_t slack : {0u, 1u}) ExpectRows(colours[0], 3, slack, RandomBytes(3 * 10000));
}

// Transforms that no converter needs stay, up to a number.
struct SharedTransformsTest : testing::Test {
  SharedTransformsTest() { kept_transforms = 3; }
  ~SharedTransformsTest() override {
    kept_transforms = 0;
    UseResourcesOf(TheLibrary().resource_module.load());
  }
  static ConverterPtr WithWhite(double x) {
    const WhitePointParams white = {0, x, 0.35};
    ConversionParams params = Params(METHOD_ICC);
    params.pWhitePoint = &white;
    return MakeConverter(CS_RGB, CS_CMY, params);
  }
};

TEST_F(SharedTransformsTest, AreMadeOnceAndBounded) {
  const size_t before = Ledger().bytes;
  const ConverterPtr first = WithWhite(0.34), second = WithWhite(0.34), other = WithWhite(0.33);
  EXPECT_EQ(first->built_in_icc, second->built_in_icc);
  EXPECT_NE(first->built_in_icc, other->built_in_icc);
  const size_t of_two = Ledger().bytes - before;
  for (int i = 0; i < 8; ++i) WithWhite(0.30 + i * 0.001);
  EXPECT_LT(Ledger().bytes - before, of_two + 4 * of_two / 2) << "three more, those used last";
  const IccTransform* kept = WithWhite(0.307)->built_in_icc;
  EXPECT_EQ(WithWhite(0.307)->built_in_icc, kept);
  kept_transforms = 0;
  WithWhite(0.307);
  EXPECT_EQ(Ledger().bytes - before, of_two) << "all at once";
}

TEST_F(SharedTransformsTest, AreForgottenWithTheirModuleAndRunInManyThreads) {
  const ConverterPtr before = WithWhite(0.34);
  SetResModule(TheLibrary().resource_module.load());
  const ConverterPtr after = WithWhite(0.34);
  EXPECT_NE(before->built_in_icc, after->built_in_icc);
  const Bytes source = RandomBytes(3 * 500 * 40);
  Bytes expected(source.size());
  ASSERT_EQ(Q_ClrConvert(before.get(), source.data(), expected.data(), 500, 40, 0, 0), SUCCESS);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      const ConverterPtr own = WithWhite(0.34);
      EXPECT_EQ(own->built_in_icc, after->built_in_icc);
      Bytes target(source.size());
      for (int i = 0; i < 20; ++i) Q_ClrConvert(own.get(), source.data(), target.data(), 500, 40, 0, 0);
      EXPECT_TRUE(target == expected);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
