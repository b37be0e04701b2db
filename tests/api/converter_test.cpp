// The life of converters: every check in its order, what a handle is, how a method is chosen, and what settings do.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "support/converters.h"
#include "support/system.h"

namespace {

using namespace qv_test;

// Each line breaks one rule and all that are tested after it.
TEST(Creation, ChecksInTheirOrder) {
  GuardedBuffer short_record(sizeof(ConversionParams) - 1), read_only(sizeof(void*));
  GuardedBuffer short_white(sizeof(WhitePointParams) - 1);
  const auto* unreadable = reinterpret_cast<const ConversionParams*>(short_record.data());
  read_only.MakeReadOnly();
  EXPECT_EQ(Q_ClrInit(nullptr, 200, 0, unreadable), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrInit(reinterpret_cast<ColorConverter**>(read_only.data()), 200, 0, unreadable), ERR_BAD_POINTER);
  EXPECT_EQ(InitStatus(200, 0, unreadable), ERR_BAD_POINTER);
  EXPECT_EQ(InitStatus(200, 200, unreadable), ERR_BAD_POINTER);

  ConversionParams params = Params(METHOD_TABLE);
  params.nEmulationTableKind = 0;
  params.pWhitePoint = reinterpret_cast<const WhitePointParams*>(short_white.data());
  params.uStructSize = 1647;
  EXPECT_EQ(InitStatus(200, 0, params), ERR_INV_STRUCT_SIZE);
  params.uStructSize = 1648;
  EXPECT_EQ(InitStatus(200, 0, params), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(InitStatus(0, 16, params), ERR_UNSUPPORTED_COLORSPACE);
  for (const uint32_t kind : {1u, 7u, 9u, 16u, 0x80000008u, 0u}) {
    params.nEmulationTableKind = kind;
    EXPECT_EQ(InitStatus(0, 2, params), ERR_INV_PARAMETER) << "the kind of table is " << kind;
  }
  params.nActiveMethod = params.nMethodMask = 0;
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

  // Equal spaces skip the checks, but not with the caller's profiles.
  params = Params(0);
  params.uStructSize = 1;
  EXPECT_EQ(InitStatus(2, 2, params), SUCCESS);
  params.nMethodMask = METHOD_CUSTOM_ICC;
  EXPECT_EQ(InitStatus(2, 2, params), ERR_INV_STRUCT_SIZE);
}

TEST(Creation, TakesEveryPairOfTheCatalogueWithoutSettings) {
  for (const uint32_t src : kSpaces) {
    for (const uint32_t dst : kSpaces) EXPECT_EQ(InitStatus(src, dst, nullptr), SUCCESS) << src << " to " << dst;
  }
  for (const uint32_t unknown : {16u, 127u, 129u, 200u, UINT32_MAX}) {
    EXPECT_EQ(InitStatus(unknown, 0, nullptr), ERR_UNSUPPORTED_COLORSPACE);
    EXPECT_EQ(InitStatus(0, unknown, nullptr), ERR_UNSUPPORTED_COLORSPACE);
    EXPECT_EQ(InitStatus(unknown, unknown, nullptr), SUCCESS);
  }
}

TEST(Creation, SubRecordsAreReadOnlyForTheirSpace) {
  GuardedBuffer none(1);
  ConversionParams params = Params(METHOD_FORMULA);
  params.pCmykParams = reinterpret_cast<const CmykParams*>(none.data());
  params.pSpace1Params = reinterpret_cast<const Space1Params*>(none.data());
  params.pLabParams = reinterpret_cast<const LabParams*>(none.data());
  EXPECT_EQ(InitStatus(0, 3, params), SUCCESS);
  for (const uint32_t space : {1u, 2u, 7u}) {
    EXPECT_EQ(InitStatus(space, 0, params), ERR_BAD_POINTER) << space;
    EXPECT_EQ(InitStatus(3, space, params), ERR_BAD_POINTER) << space;
  }
  const LabParams wrong_lab = {.uStructSize = 31};
  params.pLabParams = &wrong_lab;
  EXPECT_EQ(InitStatus(0, 7, params), ERR_INV_STRUCT_SIZE);
  for (const auto& [size, luma_bytes, status] :
       {std::tuple{43u, 0u, ERR_INV_STRUCT_SIZE}, {44u, 2u, ERR_BAD_POINTER}, {44u, 1u, SUCCESS}}) {
    const Space1Params yuv = {.uStructSize = size, .pLumaTable = none.data(), .nLumaTableBytes = luma_bytes};
    params.pSpace1Params = &yuv;
    EXPECT_EQ(InitStatus(1, 0, params), status);
  }
}

TEST(Creation, AutomaticChoice) {
  const ConversionParams params = Params(METHOD_AUTOMATIC), before = params;
  for (const auto& [src, dst, status] : {std::tuple{CS_RGB, CS_HSV, ERR_UNSUPPORTED_METHOD},  // no rule matches
                                         {CS_RGB, CS_CMYK_PROFILE, ERR_UNSUPPORTED_METHOD},   // of the source only
                                         {CS_CMYK_PROFILE, CS_RGB, SUCCESS},
                                         {CS_HSV, CS_HLS, SUCCESS},
                                         {CS_LAB, CS_RGB, SUCCESS}})
    EXPECT_EQ(InitStatus(src, dst, params), status) << src << " to " << dst;
  ConversionParams half = params;
  half.nMethodMask = METHOD_FORMULA;
  EXPECT_EQ(InitStatus(CS_LAB, CS_RGB, half), ERR_UNSUPPORTED_METHOD);
  const Bytes source = RandomBytes(300);
  for (const auto& [partner, chosen] : {std::pair{CS_CMYK, METHOD_ICC}, {CS_LAB, METHOD_FORMULA}}) {
    EXPECT_EQ(Converted(MakeConverter(CS_RGB, partner, params), source, 75, 300),
              Converted(MakeConverter(CS_RGB, partner, Params(chosen)), source, 75, 300));
  }
  EXPECT_EQ(std::memcmp(&before, &params, sizeof before), 0) << "the caller's record is never written to";
}

TEST(Creation, NarrowRecordGivesTheSameConverter) {
  ColorConverter* handle = nullptr;
  EXPECT_EQ(Q_ClrInitA(nullptr, 0, 2, nullptr), ERR_INV_PARAMETER);
  GuardedBuffer short_record(sizeof(ConversionParamsA) - 1);
  EXPECT_EQ(Q_ClrInitA(&handle, 0, 2, reinterpret_cast<const ConversionParamsA*>(short_record.data())),
            ERR_BAD_POINTER);
  EXPECT_FALSE(handle);

  const CmykParams full_black = {12, 1000, 0};
  ConversionParamsA narrow{};  // its size field is not looked at
  narrow.nActiveMethod = narrow.nMethodMask = METHOD_FORMULA;
  narrow.pCmykParams = &full_black;
  std::ranges::fill(narrow.sSourceProfileName, '\xFF');  // unterminated and no text: unused by this method
  ASSERT_EQ(Q_ClrInitA(&handle, CS_RGB, CS_CMYK, &narrow), SUCCESS);
  EXPECT_EQ(Converted(ConverterPtr(handle), Bytes(3), 1, 4), (Bytes{0, 0, 0, 255}));
  narrow.nActiveMethod = narrow.nMethodMask = narrow.nEmulationTableKind = METHOD_TABLE;
  ASSERT_EQ(Q_ClrInitA(&handle, CS_CMYK, CS_RGB, &narrow), SUCCESS);
  EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
  narrow.nActiveMethod = narrow.nMethodMask = METHOD_CUSTOM_ICC;
  EXPECT_EQ(Q_ClrInitA(&handle, CS_RGB, CS_CMYK, &narrow), ERR_PROFILE_NAME);
}

TEST(Settings, OfYuvReplaceSpansOffsetsAndLuma) {
  ConversionParams params = Params(METHOD_FORMULA);
  Space1Params zero = {.uStructSize = 44, .nLumaTableBytes = 300};  // a count without a table
  params.pSpace1Params = &zero;
  const Bytes rgb = RandomBytes(3 * 1000);
  EXPECT_EQ(Converted(MakeConverter(CS_RGB, CS_YUV, params), rgb, 1000, 3000),
            Converted(MakeConverter(CS_RGB, CS_YUV), rgb, 1000, 3000));

  Bytes luma(256);
  for (size_t i = 0; i < 256; ++i) luma[i] = static_cast<uint8_t>(255 - i / 2);  // falling, every value twice
  Space1Params settings = {44, 0, 446, 224, 550, 276, luma.data(), 256, 510, {}};
  params.pSpace1Params = &settings;
  const ConverterPtr to_yuv = MakeConverter(CS_RGB, CS_YUV, params), back = MakeConverter(CS_YUV, CS_RGB, params);
  std::ranges::fill(luma, uint8_t{7});  // the converters have their own
  // White: luma 255 of a span of 510 is 128 (127.5 + 0.5), stored as 255 - 64; chroma keeps its middle.
  EXPECT_EQ(Converted(to_yuv, {255, 255, 255}, 1, 3), (Bytes{191, 128, 128}));
  // The smallest index with 191 is 128: luma 256. U is one below its middle, trunc(128 / 255 x 446) - 224: blue 253.
  EXPECT_EQ(Converted(back, {191, 128, 128}, 1, 3), (Bytes{255, 255, 253}));
  // 0 is nearest to 128, index 254: luma 508.
  EXPECT_EQ(Converted(back, {0, 128, 128}, 1, 3), (Bytes{255, 255, 255}));
}

using Three = std::array<double, 3>;

// CIELAB in doubles, with the constants of the formulas.
Three LabOf(const uint8_t* rgb) {
  const auto linear = [](uint8_t byte) { return std::pow(byte / 255.0, 1 / 0.45); };
  const double r = linear(rgb[0]), g = linear(rgb[1]), b = linear(rgb[2]);
  const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.7867 * t + 16.0 / 116; };
  const double fx = f((0.4124529957771301 * r + 0.3575800061225891 * g + 0.18042300641536713 * b) / 0.950166015625);
  const double fy = f(0.21267099678516388 * r + 0.7151600122451782 * g + 0.0721689984202385 * b);
  const double fz =
      f((0.01933399960398674 * r + 0.11919300258159637 * g + 0.9502270221710205 * b) / 1.0876499938964844);
  return {116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)};
}

// Ranges below 1 are the usual ones.
TEST(Settings, OfLabCodeByOffsetsAndRanges) {
  const Bytes source = RandomBytes(3 * 20000);
  for (const LabParams& lab : {LabParams{32, 0, 0, 0, 128, 0, 96, -5}, LabParams{32, 0, 10, 120, 100, 300, 120, 250}}) {
    ConversionParams params = Params(METHOD_FORMULA);
    params.pLabParams = &lab;
    const Bytes coded = Converted(MakeConverter(CS_RGB, CS_LAB, params), source, 20000, source.size());
    const bool usual = lab.nLRange < 1;
    const Three offsets = {lab.nLOffset * 1.0, lab.nAOffset * 1.0, lab.nBOffset * 1.0};
    const Three ranges = usual ? Three{100, 170, 200} : Three{120, 300, 250};
    for (size_t i = 0; i < source.size(); i += 3) {
      const Three exact = LabOf(&source[i]);
      for (size_t c = 0; c < 3; ++c)
        ASSERT_NEAR(coded[i + c], std::clamp(exact[c] * 255 / ranges[c] + offsets[c], 0.0, 255.0), 0.6) << i;
    }
  }
}

TEST(Handles, OnlyListedConvertersAreValid) {
  ConverterPtr converter = MakeConverter(CS_RGB, CS_CMY);
  ASSERT_TRUE(converter);
  GuardedBuffer copy(1712);
  std::memcpy(copy.data(), converter.get(), 1712);
  EXPECT_EQ(copy.data()[0] | copy.data()[1] << 8, 1712);
  auto* const forged = reinterpret_cast<ColorConverter*>(copy.data());
  auto* const beyond = reinterpret_cast<ColorConverter*>(copy.data() + 1);  // one byte short, and not aligned
  for (const auto& [handle, status] : {std::pair{forged, ERR_INV_CONVERTER},
                                       {static_cast<ColorConverter*>(nullptr), ERR_INV_PARAMETER},
                                       {beyond, ERR_INV_PARAMETER}}) {
    EXPECT_EQ(Q_ClrIsValid(handle), ERR_INV_CONVERTER);
    EXPECT_EQ(Q_ClrFree(handle), status);
  }
  ColorConverter* const handle = converter.release();
  EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
  const int32_t second = Q_ClrFree(handle);
  EXPECT_TRUE(second == ERR_INV_CONVERTER || second == ERR_INV_PARAMETER) << second;
}

}  // namespace
