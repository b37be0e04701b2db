// The life of converters: every check in its order, what a handle is, and how a method is chosen.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/converters.h"
#include "support/guarded.h"

namespace {

using namespace qv_test;

ColorConverter* const kUntouched = reinterpret_cast<ColorConverter*>(uintptr_t{0x1234});

int32_t InitStatus(uint32_t src, uint32_t dst, const ConversionParams* params) {
  ColorConverter* handle = kUntouched;
  const int32_t status = Q_ClrInit(&handle, src, dst, params);
  if (status == SUCCESS) {
    EXPECT_EQ(Q_ClrIsValid(handle), SUCCESS);
    EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
  } else {
    EXPECT_EQ(handle, kUntouched) << "a handle was stored with status " << status;
  }
  return status;
}
int32_t InitStatus(uint32_t src, uint32_t dst, const ConversionParams& params) { return InitStatus(src, dst, &params); }

// Each line breaks one rule and all that are tested after it.
TEST(Creation, ChecksInTheirOrder) {
  GuardedBuffer short_record(sizeof(ConversionParams) - 1);
  const auto* unreadable = reinterpret_cast<const ConversionParams*>(short_record.data());
  GuardedBuffer read_only(sizeof(void*));
  read_only.MakeReadOnly();
  GuardedBuffer short_white(sizeof(WhitePointParams) - 1);

  EXPECT_EQ(Q_ClrInit(nullptr, 200, 0, unreadable), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrInit(reinterpret_cast<ColorConverter**>(read_only.data()), 200, 0, unreadable), ERR_BAD_POINTER);
  EXPECT_EQ(InitStatus(200, 0, unreadable), ERR_BAD_POINTER);
  EXPECT_EQ(InitStatus(200, 200, unreadable), ERR_BAD_POINTER);

  ConversionParams params = Params(METHOD_TABLE);
  params.pWhitePoint = reinterpret_cast<const WhitePointParams*>(short_white.data());
  params.uStructSize = 1647;
  EXPECT_EQ(InitStatus(200, 0, params), ERR_INV_STRUCT_SIZE);
  params.uStructSize = 1648;
  EXPECT_EQ(InitStatus(200, 0, params), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(InitStatus(0, 16, params), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(InitStatus(0, 2, params), ERR_INV_PARAMETER) << "the kind of table is 0";
  params.nActiveMethod = 0;
  params.nMethodMask = 0;
  EXPECT_EQ(InitStatus(0, 2, params), ERR_BAD_POINTER) << "the white point";
  const WhitePointParams no_chromaticity = {0, 0.3, 0};
  params.pWhitePoint = &no_chromaticity;
  EXPECT_EQ(InitStatus(0, 2, params), ERR_UNSUPPORTED_METHOD) << "no method in the mask";
  params.nMethodMask = METHOD_ICC;
  params.nActiveMethod = METHOD_FORMULA;
  EXPECT_EQ(InitStatus(0, 2, params), ERR_UNSUPPORTED_METHOD) << "the active method is not in the mask";
  params.nActiveMethod = METHOD_ICC;
  EXPECT_EQ(InitStatus(0, 3, params), ERR_UNSUPPORTED_COLORSPACE) << "a pair that ICC does not convert";
  CmykParams wrong_size = {11, 175, 0};
  params.pCmykParams = &wrong_size;
  EXPECT_EQ(InitStatus(0, 2, params), ERR_INV_PARAMETER) << "the custom white point";
  params.pWhitePoint = nullptr;
  EXPECT_EQ(InitStatus(0, 2, params), ERR_INV_STRUCT_SIZE) << "the CMYK settings";
  wrong_size.uStructSize = 12;
  EXPECT_EQ(InitStatus(0, 2, params), SUCCESS);
}

TEST(Creation, EqualSpacesSkipTheChecks) {
  EXPECT_EQ(InitStatus(200, 200, nullptr), SUCCESS);
  ConversionParams params = Params(0);
  params.uStructSize = 1;
  EXPECT_EQ(InitStatus(2, 2, params), SUCCESS);
  params.nMethodMask = METHOD_CUSTOM_ICC;
  EXPECT_EQ(InitStatus(2, 2, params), ERR_INV_STRUCT_SIZE) << "but not with caller's profiles";
}

TEST(Creation, TakesEveryPairOfTheCatalogueWithoutSettings) {
  const uint32_t ids[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 128};
  for (const uint32_t src : ids) {
    for (const uint32_t dst : ids) EXPECT_EQ(InitStatus(src, dst, nullptr), SUCCESS) << src << " to " << dst;
  }
  for (const uint32_t unknown : {16u, 127u, 129u, 200u, UINT32_MAX}) {
    EXPECT_EQ(InitStatus(unknown, 0, nullptr), ERR_UNSUPPORTED_COLORSPACE);
    EXPECT_EQ(InitStatus(0, unknown, nullptr), ERR_UNSUPPORTED_COLORSPACE);
  }
}

TEST(Creation, SubRecordsAreReadOnlyForTheirSpace) {
  GuardedBuffer none(1);
  const auto* cmyk = reinterpret_cast<const CmykParams*>(none.data());
  const auto* space1 = reinterpret_cast<const Space1Params*>(none.data());
  const auto* lab = reinterpret_cast<const LabParams*>(none.data());
  ConversionParams params = Params(METHOD_FORMULA);
  params.pCmykParams = cmyk;
  params.pSpace1Params = space1;
  params.pLabParams = lab;
  EXPECT_EQ(InitStatus(0, 3, params), SUCCESS);
  for (const uint32_t space : {1u, 2u, 7u}) {
    EXPECT_EQ(InitStatus(space, 0, params), ERR_BAD_POINTER) << space;
    EXPECT_EQ(InitStatus(3, space, params), ERR_BAD_POINTER) << space;
  }
  const Space1Params wrong_yuv = {.uStructSize = 43};
  const LabParams wrong_lab = {.uStructSize = 31};
  params.pSpace1Params = &wrong_yuv;
  params.pLabParams = &wrong_lab;
  EXPECT_EQ(InitStatus(1, 0, params), ERR_INV_STRUCT_SIZE);
  EXPECT_EQ(InitStatus(0, 7, params), ERR_INV_STRUCT_SIZE);
  Space1Params luma = {.uStructSize = 44, .pLumaTable = none.data(), .nLumaTableBytes = 2};
  params.pSpace1Params = &luma;
  EXPECT_EQ(InitStatus(1, 0, params), ERR_BAD_POINTER) << "the luma table";
  luma.nLumaTableBytes = 1;
  EXPECT_EQ(InitStatus(1, 0, params), SUCCESS);
}

TEST(Creation, AutomaticChoice) {
  const ConversionParams params = Params(METHOD_AUTOMATIC);
  EXPECT_EQ(InitStatus(CS_RGB, CS_HSV, params), ERR_UNSUPPORTED_METHOD) << "no rule matches";
  EXPECT_EQ(InitStatus(CS_RGB, CS_CMYK_PROFILE, params), ERR_UNSUPPORTED_METHOD) << "only the source is looked at";
  EXPECT_EQ(InitStatus(CS_CMYK_PROFILE, CS_RGB, params), SUCCESS);
  EXPECT_EQ(InitStatus(CS_HSV, CS_HLS, params), SUCCESS);
  EXPECT_EQ(InitStatus(CS_LAB, CS_RGB, params), SUCCESS);
  ConversionParams half = params;
  half.nMethodMask = METHOD_FORMULA;
  EXPECT_EQ(InitStatus(CS_LAB, CS_RGB, half), ERR_UNSUPPORTED_METHOD);

  // CMYK goes through the profiles: black is not the complement with 44 of K that the formula gives.
  const ConversionParams before = params;
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_CMYK, params);
  ASSERT_TRUE(converter);
  EXPECT_EQ(std::memcmp(&before, &params, sizeof before), 0) << "the caller's record is never written to";
  const uint8_t black[3] = {0, 0, 0};
  uint8_t ink[4] = {};
  ASSERT_EQ(Q_ClrConvert(converter.get(), black, ink, 1, 1, 0, 0), SUCCESS);
  EXPECT_GT(ink[3], 128);
}

TEST(Creation, MethodsOfTheCallerNeedItsFiles) {
  for (const uint32_t method : {METHOD_CUSTOM_ICC, METHOD_CUSTOM_TABLE}) {
    EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, Params(method)), ERR_PROFILE_NAME);
  }
  EXPECT_EQ(InitStatus(CS_CMY, CS_RGB, Params(METHOD_CUSTOM_TABLE)), SUCCESS) << "a pair without a table";
}

TEST(Creation, NarrowRecordGivesTheSameConverter) {
  ColorConverter* handle = kUntouched;
  EXPECT_EQ(Q_ClrInitA(nullptr, 0, 2, nullptr), ERR_INV_PARAMETER);
  GuardedBuffer short_record(sizeof(ConversionParamsA) - 1);
  EXPECT_EQ(Q_ClrInitA(&handle, 0, 2, reinterpret_cast<const ConversionParamsA*>(short_record.data())),
            ERR_BAD_POINTER);
  EXPECT_EQ(handle, kUntouched);

  const CmykParams full_black = {12, 1000, 0};
  ConversionParamsA narrow{};  // its size field is not looked at
  narrow.nActiveMethod = narrow.nMethodMask = METHOD_FORMULA;
  narrow.pCmykParams = &full_black;
  std::ranges::fill(narrow.sSourceProfileName, '\xFF');  // unterminated and no text: unused by this method
  ASSERT_EQ(Q_ClrInitA(&handle, CS_RGB, CS_CMYK, &narrow), SUCCESS);
  const ConverterPtr converter(handle);
  const uint8_t black[3] = {0, 0, 0};
  uint8_t ink[4] = {1, 1, 1, 1};
  ASSERT_EQ(Q_ClrConvert(handle, black, ink, 1, 1, 0, 0), SUCCESS);
  const uint8_t only_black[4] = {0, 0, 0, 255};
  EXPECT_EQ(std::memcmp(ink, only_black, 4), 0);
  ASSERT_EQ(Q_ClrInitA(&handle, 200, 200, nullptr), SUCCESS);
  EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
}

TEST(Handles, OnlyListedConvertersAreValid) {
  ConverterPtr converter = MakeConverter(CS_RGB, CS_CMY);
  ASSERT_TRUE(converter);
  GuardedBuffer copy(1712);
  std::memcpy(copy.data(), converter.get(), 1712);
  auto* forged = reinterpret_cast<ColorConverter*>(copy.data());
  EXPECT_EQ(Q_ClrIsValid(forged), ERR_INV_CONVERTER);
  EXPECT_EQ(Q_ClrFree(forged), ERR_INV_CONVERTER);
  EXPECT_EQ(Q_ClrIsValid(nullptr), ERR_INV_CONVERTER);
  EXPECT_EQ(Q_ClrFree(nullptr), ERR_INV_PARAMETER);
  auto* beyond = reinterpret_cast<ColorConverter*>(copy.data() + 1);  // one byte short, and not aligned
  EXPECT_EQ(Q_ClrIsValid(beyond), ERR_INV_CONVERTER);
  EXPECT_EQ(Q_ClrFree(beyond), ERR_INV_PARAMETER);

  uint32_t marker = 0;
  std::memcpy(&marker, converter.get(), sizeof marker);
  EXPECT_EQ(marker, 1712u);
  ColorConverter* const handle = converter.release();
  EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
  const int32_t second = Q_ClrFree(handle);
  EXPECT_TRUE(second == ERR_INV_CONVERTER || second == ERR_INV_PARAMETER) << second;
}

}  // namespace
