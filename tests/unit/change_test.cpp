// What a change leaves in a converter's record: every set of changes, with a failure in each of its steps.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>

#include "qvclr/converter.h"
#include "support/converters.h"
#include "support/files.h"
#include "support/system.h"

namespace {

using namespace qv_test;

// The record of a change that can be made in every step, with the sub-records that it points to.
struct Change {
  CmykParams cmyk = {12, 900, 1};
  Space1Params yuv = {.uStructSize = 44, .nFlags = 1, .nUSpan = 99};
  LabParams lab = {.uStructSize = 32, .nFlags = 1, .nLOffset = 7};
  WhitePointParams white = {65, 0, 0};
  ConversionParams params{};

  explicit Change(uint32_t bits) {
    params.nMethodMask = bits;
    params.nActiveMethod = METHOD_CUSTOM_ICC;
    params.pWhitePoint = &white;
    params.pCmykParams = &cmyk;
    params.pSpace1Params = &yuv;
    params.pLabParams = &lab;
    SetName(std::filesystem::path(QV_RES) / "srgb.icc", params.sSourceProfileName);
    SetName("no such table", params.sEmulationTableName);
  }
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;
};

// A step in its place in the order: how to make it fail, and whether a record shows it.
struct Step {
  uint32_t bit, space;
  int32_t failure;  // of the spoilt change; 0 where nothing of it can fail
  void (*spoil)(Change& change);
  bool (*is_made)(const ColorConverter& converter);
};
const Step kSteps[] = {
    {CHANGE_ACTIVE_METHOD, 0, ERR_UNSUPPORTED_METHOD, [](Change& c) { c.params.nActiveMethod = METHOD_ICC; },
     [](const ColorConverter& c) { return c.active_method != METHOD_FORMULA; }},
    {CHANGE_CMYK, CS_CMYK, ERR_INV_STRUCT_SIZE, [](Change& c) { c.cmyk.uStructSize = 16; },
     [](const ColorConverter& c) { return c.cmyk_params && c.cmyk_params->nBlackParam == 900; }},
    {CHANGE_SPACE1, CS_YUV, ERR_INV_PARAMETER, [](Change& c) { c.params.pSpace1Params = nullptr; },
     [](const ColorConverter& c) { return c.yuv && c.yuv->params.nUSpan == 99; }},
    {CHANGE_LAB, CS_LAB, ERR_INV_PARAMETER, [](Change& c) { c.params.pLabParams = nullptr; },
     [](const ColorConverter& c) { return c.lab_to_rgb && c.lab_to_rgb->constants.l_offset == 7; }},
    {CHANGE_WHITE_POINT, 0, ERR_INV_PARAMETER, [](Change& c) { c.params.pWhitePoint = nullptr; },
     [](const ColorConverter& c) { return c.white_point->nWhitePoint == 65; }},
    {CHANGE_PROFILES, 0, ERR_PROFILE_NAME, [](Change& c) { c.params.sSourceProfileName[0] = '?'; },
     [](const ColorConverter& c) { return c.src_profile_name[0] != 0; }},
    {CHANGE_TABLE, 0, 0, nullptr, [](const ColorConverter& c) { return c.table_name[0] != 0; }},
};

// What becomes of the set of changes, by the rules: the status, and the bits of the steps that are made.
struct Outcome {
  int32_t status = SUCCESS;
  uint32_t made = 0;
};
Outcome Expected(uint32_t src, uint32_t dst, uint32_t bits, const Step* spoilt) {
  const bool engine_serves = src == CS_RGB && dst == CS_LAB;
  Outcome outcome;
  for (const Step& step : kSteps) {
    if ((bits & step.bit) == 0) continue;
    const bool names = step.bit == CHANGE_PROFILES;
    if (&step == spoilt) outcome.status = step.failure;
    if (step.space != 0 && src != step.space && dst != step.space) outcome.status = ERR_UNSUPPORTED_METHOD;
    if (names && !engine_serves) outcome.status = ERR_UNSUPPORTED_COLORSPACE;
    if (outcome.status == SUCCESS || names) outcome.made |= step.bit;  // names are taken before they are looked up
    const bool rebuilds = step.bit == CHANGE_WHITE_POINT && (bits & (CHANGE_ACTIVE_METHOD | CHANGE_PROFILES)) == 1;
    if (rebuilds && outcome.status == SUCCESS && !engine_serves) outcome.status = ERR_UNSUPPORTED_COLORSPACE;
    if (outcome.status != SUCCESS) return outcome;
  }
  return outcome;
}

TEST(ChangeSets, AreMadeInOrderUpToTheFirstFailure) {
  const auto lab_profile = std::filesystem::path(QV_RES) / "lab.icc";
  const CmykParams cmyk = {12, 300, 0};
  const Space1Params yuv = {.uStructSize = 44};
  const LabParams lab = {.uStructSize = 32};
  ConversionParams made_with = Params(METHOD_FORMULA);
  made_with.pCmykParams = &cmyk;
  made_with.pSpace1Params = &yuv;
  made_with.pLabParams = &lab;
  for (const auto& [src, dst] :
       {std::pair{CS_RGB, CS_LAB}, {CS_CMYK, CS_LAB}, {CS_LAB, CS_YUV}, {CS_YUV, CS_CMYK}, {CS_HSV, CS_HLS}}) {
    for (uint32_t bits = 0; bits < 128; ++bits) {
      // Transforms and the tables of Lab take their time: there every pair, and all that the spaces allow.
      const bool slow = src == CS_RGB || src == CS_LAB;
      const uint32_t all_possible = src == CS_RGB ? 127 - CHANGE_CMYK - CHANGE_SPACE1 : 127 - CHANGE_CMYK;
      if (slow && std::popcount(bits) > 2 && bits != all_possible) continue;
      for (const Step& spoilt : kSteps) {
        // The last one cannot fail: it stands for nothing spoilt.
        if (spoilt.spoil && (bits & spoilt.bit) == 0) continue;
        SCOPED_TRACE(testing::Message() << src << " to " << dst << ", bits " << bits << ", spoilt " << spoilt.bit);
        const ConverterPtr converter = MakeConverter(src, dst, made_with);
        ASSERT_TRUE(converter);
        converter->method_mask |= METHOD_CUSTOM_ICC;  // as if prepared for it, without a first transform
        SetName(lab_profile, converter->dst_profile_name);
        Change change(bits);
        if (spoilt.spoil) spoilt.spoil(change);
        const Outcome expected = Expected(src, dst, bits, spoilt.spoil ? &spoilt : nullptr);
        EXPECT_EQ(Q_ClrSetConversionParams(converter.get(), &change.params), expected.status);
        for (const Step& step : kSteps) {
          EXPECT_EQ(step.is_made(*converter), (expected.made & step.bit) != 0) << "step " << step.bit;
        }
      }
    }
  }
}

int32_t Set(const ConverterPtr& converter, uint32_t bits, const Change& change) {
  ConversionParams params = change.params;
  params.nMethodMask = bits;
  return Q_ClrSetConversionParams(converter.get(), &params);
}

TEST(ChangedLuma, HasABufferThatGrowsAndNeverShrinks) {
  const Bytes first(256, 1), longer(300, 2), shorter(10, 3);
  const ConverterPtr converter = MakeConverter(CS_YUV, CS_RGB);
  Change change(CHANGE_SPACE1);
  const auto set = [&](uint32_t flags, const uint8_t* luma, uint32_t bytes) {
    change.yuv = {.uStructSize = 44, .nFlags = flags, .nUSpan = 50, .pLumaTable = luma, .nLumaTableBytes = bytes};
    return Set(converter, CHANGE_SPACE1, change);
  };
  EXPECT_EQ(set(0, first.data(), 256), SUCCESS);
  EXPECT_EQ(set(16, longer.data(), 300), SUCCESS);
  const qv::YuvRecord& record = *converter->yuv;
  const uint8_t* const grown = record.params.pLumaTable;
  EXPECT_TRUE(record.params.nLumaTableBytes == 256 && record.luma_bytes == 300 && grown[299] == 2);
  EXPECT_EQ(set(16, shorter.data(), 10), SUCCESS);
  EXPECT_TRUE(record.params.pLumaTable == grown && record.luma_bytes == 300 && grown[9] == 3 && grown[10] == 2);
  EXPECT_EQ(set(16, nullptr, 0), SUCCESS);
  EXPECT_EQ(set(16 | 1, nullptr, 5), ERR_BAD_POINTER);
  const GuardedBuffer short_table(9);
  EXPECT_EQ(set(16 | 1, short_table.data(), 10), ERR_BAD_POINTER);
  EXPECT_EQ(grown[0], 3) << "nothing of a failed step";
  EXPECT_EQ(set(32, nullptr, 1000), SUCCESS);
  EXPECT_TRUE(record.params.nLumaTableBytes == 1000 && record.settings.stored_luma == grown);
  EXPECT_EQ(set(32, nullptr, 255), SUCCESS);
  EXPECT_EQ(record.settings.stored_luma, nullptr) << "too short to be used";
}

// The record that a change makes has settings of its own.
TEST(ChangedLab, IsMadeWithItsOwnSettings) {
  Change change(CHANGE_LAB);
  const ConverterPtr converter = MakeConverter(CS_LAB, CS_RGB), other_way = MakeConverter(CS_RGB, CS_LAB);
  for (const ConverterPtr* changed : {&converter, &other_way}) {
    ASSERT_EQ(Set(*changed, CHANGE_LAB, change), SUCCESS);
    EXPECT_TRUE((*changed)->lab_to_rgb && !(*changed)->rgb_to_lab);
  }
  const qv::LabConstants& c = converter->lab_to_rgb->constants;
  EXPECT_EQ((std::array{c.l_offset, c.l_range, c.a_offset, c.a_range, c.b_offset, c.b_range}),
            (std::array{0, 100, 128, 170, 96, 200}));
  EXPECT_EQ(c.white, (std::array{96.421, 99.997, 82.524}));
  change.lab = {32, 63, 0, 0, 0, -1, 0, INT32_MIN};
  EXPECT_EQ(Set(converter, CHANGE_LAB, change), SUCCESS);
  EXPECT_TRUE(c.l_range == 100 && c.a_range == 170 && c.b_range == 200) << "no range below 1";
}

}  // namespace
