// Changes of live converters: a changed converter converts as one that was made with the same settings.
#include <gtest/gtest.h>

#include <cstring>

#include "support/converters.h"
#include "support/files.h"
#include "support/system.h"

namespace {

using namespace qv_test;
constexpr int32_t kPixels = 500;

int32_t Set(const ConverterPtr& converter, uint32_t bits, ConversionParams params = {}) {
  params.nMethodMask = bits;
  return Q_ClrSetConversionParams(converter.get(), &params);
}
int32_t Activate(const ConverterPtr& converter, uint32_t method) {
  return Set(converter, CHANGE_ACTIVE_METHOD, {.nActiveMethod = method});
}

int32_t SetNarrow(const ConverterPtr& converter, uint32_t bits, const ConversionParams& params) {
  ConversionParamsA narrow{.pWhitePoint = params.pWhitePoint,
                           .pCmykParams = params.pCmykParams,
                           .pSpace1Params = params.pSpace1Params,
                           .pLabParams = params.pLabParams,
                           .nMethodMask = bits};
  const auto take = [](const QWChar(&from)[260], char(&to)[260]) {
    std::ranges::transform(from, to, [](QWChar unit) { return static_cast<char>(unit); });
  };
  take(params.sSourceProfileName, narrow.sSourceProfileName);
  take(params.sDestProfileName, narrow.sDestProfileName);
  take(params.sEmulationTableName, narrow.sEmulationTableName);
  return Q_ClrSetConversionParamsA(converter.get(), &narrow);
}

void Put(ConversionParams& params, const CmykParams* record) { params.pCmykParams = record; }
void Put(ConversionParams& params, const Space1Params* record) { params.pSpace1Params = record; }
void Put(ConversionParams& params, const LabParams* record) { params.pLabParams = record; }
void Put(ConversionParams& params, const WhitePointParams* record) { params.pWhitePoint = record; }
template <typename... Records>
ConversionParams With(ConversionParams params, const Records*... records) {
  (Put(params, records), ...);
  return params;
}

int32_t ConversionStatus(const ConverterPtr& converter, Bytes* target = nullptr) {
  static const Bytes source = RandomBytes(4 * kPixels);
  Bytes made(4 * kPixels, 0xEE);
  const int32_t status = Q_ClrConvert(converter.get(), source.data(), made.data(), kPixels, 1, 0, 0);
  if (target) *target = made;
  return status;
}
Bytes Pixels(const ConverterPtr& converter) {
  Bytes target;
  EXPECT_TRUE(converter);
  EXPECT_EQ(ConversionStatus(converter, &target), SUCCESS);
  return target;
}

struct Changes : testing::Test {
  using Name = std::filesystem::path;
  static ConversionParams Named(const Name& src, const Name& dst = {}, const Name& table = {}) {
    ConversionParams params = Params(METHOD_CUSTOM_ICC);
    SetName(src, params.sSourceProfileName);
    SetName(dst, params.sDestProfileName);
    SetName(table, params.sEmulationTableName);
    return params;
  }
  static ConversionParams TableNamed(const Name& table) {
    ConversionParams params = Named({}, {}, table);
    params.nActiveMethod = params.nMethodMask = METHOD_CUSTOM_TABLE;
    return params;
  }

  const Folder folder{"qv_change_test"};
  const Bytes linear_profile = Contents(QV_PROFILES "/LStar-RGB.icc");
  const Bytes dark_profile = Contents(QV_PROFILES "/compatibleWithAdobeRGB1998.icc");
  const Name linear = folder.Write("linear.icc", linear_profile), dark = folder.Write("dark.icc", dark_profile);
  const Name srgb = Name(QV_RES) / "srgb.icc", nowhere = folder.In("nowhere");
  const Name text = folder.Write("text", Bytes(200, 'x'));
  const IccMemoryProfile memory = {16, linear_profile.data(), static_cast<uint32_t>(linear_profile.size())};
  const IccMemoryProfile dark_memory = {16, dark_profile.data(), static_cast<uint32_t>(dark_profile.size())};
};

TEST_F(Changes, CheckTheirArgumentsInOrder) {
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_CMYK);
  GuardedBuffer short_handle(1711), forged(1712);
  auto* const no_handle = reinterpret_cast<ColorConverter*>(short_handle.data());
  auto* const no_converter = reinterpret_cast<ColorConverter*>(forged.data());
  std::memcpy(forged.data(), converter.get(), 1712);
  const auto expect = [&](auto set, const auto* record) {
    using Record = std::remove_cvref_t<decltype(*record)>;
    const GuardedBuffer short_record(sizeof(Record) - 1);
    const auto* unreadable = reinterpret_cast<const Record*>(short_record.data());
    EXPECT_EQ(set(nullptr, unreadable), ERR_INV_PARAMETER);
    EXPECT_EQ(set(no_handle, nullptr), ERR_INV_PARAMETER);
    EXPECT_EQ(set(no_converter, unreadable), ERR_BAD_POINTER);
    EXPECT_EQ(set(no_handle, record), ERR_BAD_POINTER);
    EXPECT_EQ(set(no_converter, record), ERR_INV_CONVERTER);
    EXPECT_EQ(set(converter.get(), unreadable), ERR_BAD_POINTER);
    EXPECT_EQ(set(converter.get(), record), SUCCESS) << "its size field is not looked at";
  };
  const ConversionParams wide{};
  const ConversionParamsA narrow{};
  expect(Q_ClrSetConversionParams, &wide);
  expect(Q_ClrSetConversionParamsA, &narrow);
}

// What no bit selects is not read.
TEST_F(Changes, TestSubRecordsOnlyOfTheirOwnBits) {
  const GuardedBuffer none(1);
  const auto* any = reinterpret_cast<const CmykParams*>(none.data());
  const ConversionParams unreadable =
      With(ConversionParams{}, any, reinterpret_cast<const Space1Params*>(any), reinterpret_cast<const LabParams*>(any),
           reinterpret_cast<const WhitePointParams*>(any));
  for (const auto& [space, bit] : {std::pair{CS_CMYK, CHANGE_CMYK}, {CS_YUV, CHANGE_SPACE1}, {CS_LAB, CHANGE_LAB}}) {
    const ConverterPtr converter = MakeConverter(space, CS_RGB), other = MakeConverter(CS_HSV, CS_RGB);
    EXPECT_EQ(Set(converter, ~127u, unreadable), SUCCESS) << "no such changes";
    EXPECT_EQ(Set(converter, static_cast<uint32_t>(bit), unreadable), ERR_BAD_POINTER) << bit;
    EXPECT_EQ(Set(other, static_cast<uint32_t>(bit), unreadable), ERR_UNSUPPORTED_METHOD) << bit;
    EXPECT_EQ(Set(converter, CHANGE_WHITE_POINT, unreadable), ERR_BAD_POINTER);
    EXPECT_EQ(Pixels(converter), Pixels(MakeConverter(space, CS_RGB)));
  }
  const Space1Params good = {.uStructSize = 44};
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_YUV);
  EXPECT_EQ(Set(converter, CHANGE_SPACE1, {.pSpace1Params = &good}), ERR_INV_PARAMETER) << "a null CMYK record";
  EXPECT_EQ(Set(converter, CHANGE_SPACE1, {.pCmykParams = any, .pSpace1Params = &good}), SUCCESS) << "it is not read";
}

TEST_F(Changes, GiveWhatAFreshConverterGives) {
  Bytes luma(256), falling(256);
  for (size_t i = 0; i < 256; ++i) luma[i] = static_cast<uint8_t>(i / 2), falling[i] = static_cast<uint8_t>(255 - i);
  const CmykParams black = {12, 300, 0}, blacker = {12, 900, 0}, taken = {12, 900, 1}, not_taken = {12, 900, ~1u};
  const Space1Params yuv = {44, 0, 200, 100, 210, 105, luma.data(), 256, 240, {}};
  const Space1Params other_yuv = {44, 0, 300, 150, 310, 155, falling.data(), 256, 250, {}};
  const auto other_with = [&](uint32_t flags) {
    Space1Params record = other_yuv;
    record.nFlags = flags;
    return record;
  };
  const Space1Params spans = other_with(1 | 8), others = other_with(2 | 4 | 64), table = other_with(16);
  const Space1Params spans_result = {44, 0, 300, 100, 210, 155, luma.data(), 256, 240, {}};
  const Space1Params others_result = {44, 0, 200, 150, 310, 105, luma.data(), 256, 250, {}};
  const Space1Params table_result = {44, 0, 200, 100, 210, 105, falling.data(), 256, 240, {}};
  const LabParams lab = {32, 0, 5, 110, 100, 150, 90, 180};
  const LabParams offsets = {32, 1 | 4 | 32, 9, 120, 110, 250, 120, 260},
                  ranges = {32, 2 | 8 | 16, 9, 120, 110, 250, 120, 260};
  const LabParams offsets_result = {32, 0, 9, 110, 110, 150, 90, 260},
                  ranges_result = {32, 0, 5, 120, 100, 250, 120, 180};
  const WhitePointParams d65 = {65, 0, 0}, custom = {0, 0.4476, 0.4074};

  const ConversionParams plain = Params(METHOD_FORMULA), icc = Params(METHOD_ICC);
  const ConversionParams by_srgb = Named(srgb), by_dark = Named(dark, linear);
  const Bytes entries = ReadResource("cmyk_rgb.et");
  const Name ends_early = folder.Write("early.tif", TiffOf(Bytes(entries.size() - 6, 77), entries.size() / 3));
  const ConversionParams empty_table = TableNamed(folder.Write("0.tif", TiffOf(Bytes(3))));
  const ConversionParams full_table = TableNamed(folder.Write("cmyk.tif", TiffOf(entries)));
  const ConversionParams lab_table = TableNamed(folder.Write("lab.tif", TiffOf(ReadResource("rgb_lab.et"))));

  const struct {
    const char* what;
    uint32_t src, dst, bits;
    ConversionParams start, change, fresh;
  } kCases[] = {
      {"black", CS_RGB, CS_CMYK, 16, With(plain, &black), With(plain, &taken), With(plain, &blacker)},
      {"without its flag", CS_BGR, CS_CMYK, 16, With(plain, &black), With(plain, &not_taken), With(plain, &black)},
      {"first record", CS_RGB, CS_CMYK, 16, plain, With(plain, &not_taken), With(plain, &blacker)},
      {"YUV U", CS_RGB, CS_YUV, 32, With(plain, &yuv), With(plain, &black, &spans), With(plain, &spans_result)},
      {"YUV others", CS_YUV, CS_RGB, 32, With(plain, &yuv), With(plain, &black, &others), With(plain, &others_result)},
      {"luma bytes", CS_BGR, CS_YUV, 32, With(plain, &yuv), With(plain, &black, &table), With(plain, &table_result)},
      {"first YUV", CS_RGB, CS_YUV, 32, plain, With(plain, &black, &other_yuv), With(plain, &other_yuv)},
      {"Lab", CS_LAB, CS_RGB, 64, With(plain, &lab), With(plain, &offsets), With(plain, &offsets_result)},
      {"Lab others", CS_LAB, CS_BGR, 64, With(plain, &lab), With(plain, &ranges), With(plain, &ranges_result)},
      {"Lab, other way", CS_RGB, CS_LAB, 64, With(plain, &lab), With(plain, &ranges), With(plain, &lab)},
      {"white", CS_RGB, CS_LAB, 4, icc, With(icc, &d65), With(icc, &d65)},
      {"white back", CS_CMYK, CS_BGR, 4, With(icc, &d65), With(icc, &custom), With(icc, &custom)},
      {"custom white", CS_RGB, CS_LAB, 4, by_srgb, With(icc, &custom), With(by_srgb, &custom)},
      {"white and names", CS_RGB, CS_CMY, 6, by_srgb, With(Named(dark), &d65), With(Named(dark), &d65)},
      {"names", CS_RGB, CS_BGR, 2, Named(linear, dark), by_dark, by_dark},
      {"one name", CS_RGB, CS_BGR, 2, by_dark, Named({}, dark), Named({}, dark)},
      {"equal sides", CS_RGB, CS_RGB, 2, by_dark, Named(linear, dark), Named(linear, dark)},
      {"table", CS_CMYK, CS_BGR, 8, empty_table, full_table, full_table},
      {"table", CS_RGB, CS_LAB, 8, empty_table, lab_table, lab_table},
      {"no file", CS_CMYK, CS_RGB, 8, full_table, TableNamed(nowhere), empty_table},
      {"no table", CS_CMYK, CS_RGB, 8, full_table, TableNamed(text), empty_table},
      {"ends early", CS_CMYK, CS_RGB, 8, full_table, TableNamed(ends_early), empty_table},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.what << ": " << c.src << " to " << c.dst);
    const ConverterPtr wide = MakeConverter(c.src, c.dst, c.start), narrow = MakeConverter(c.src, c.dst, c.start);
    const Bytes expected = Pixels(MakeConverter(c.src, c.dst, c.fresh)), before = Pixels(wide);
    EXPECT_EQ(before == expected, std::memcmp(&c.start, &c.fresh, sizeof c.start) == 0) << "the case shows nothing";
    EXPECT_EQ(Set(wide, c.bits, c.change), SUCCESS);
    EXPECT_EQ(SetNarrow(narrow, c.bits, c.change), SUCCESS);
    EXPECT_EQ(Pixels(wide), expected);
    EXPECT_EQ(Pixels(narrow), expected);
  }
}

TEST_F(Changes, OfTheMethodAreTestedForFourOfThem) {
  ConversionParams params = Params(METHOD_FORMULA);
  params.nMethodMask = METHOD_FORMULA | METHOD_ICC;
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_LAB, params), two_steps = MakeConverter(CS_HSV, CS_CMYK);
  const Bytes formula = Pixels(converter), icc = Pixels(MakeConverter(CS_RGB, CS_LAB, Params(METHOD_ICC)));
  for (const uint32_t method : {4u, 8u}) EXPECT_EQ(Activate(converter, method), ERR_UNSUPPORTED_METHOD);
  EXPECT_EQ(Pixels(converter), formula);
  for (const uint32_t method : {0u, 3u, 16u, 32u, 77u, 0x80000000u}) {
    EXPECT_EQ(Activate(converter, method), SUCCESS) << method;
    EXPECT_EQ(ConversionStatus(converter), ERR_UNSUPPORTED_METHOD) << method;
  }
  EXPECT_EQ(Activate(two_steps, 77), SUCCESS);
  EXPECT_EQ(ConversionStatus(two_steps), SUCCESS) << "no method is asked for there";

  // A white point is made use of where the active method has one.
  const WhitePointParams d65 = {65, 0, 0}, impossible = {0, 0.3, 0};
  EXPECT_EQ(Set(converter, CHANGE_WHITE_POINT), SUCCESS) << "the record is not read";
  EXPECT_EQ(Activate(converter, METHOD_FORMULA), SUCCESS);
  EXPECT_EQ(Set(converter, CHANGE_WHITE_POINT), ERR_INV_PARAMETER);
  EXPECT_EQ(Set(converter, CHANGE_WHITE_POINT, {.pWhitePoint = &impossible}), SUCCESS) << "the formulas have no use";
  EXPECT_EQ(Activate(converter, METHOD_ICC), SUCCESS);
  EXPECT_EQ(Pixels(converter), icc) << "nothing was made anew";
  EXPECT_EQ(Set(converter, CHANGE_WHITE_POINT, {.pWhitePoint = &impossible}), ERR_INV_PARAMETER);
  EXPECT_EQ(ConversionStatus(converter), ERR_UNSUPPORTED_METHOD) << "the transform is gone";
  EXPECT_EQ(Set(converter, CHANGE_WHITE_POINT, {.pWhitePoint = &d65}), SUCCESS);
  EXPECT_NE(Pixels(converter), icc);
}

TEST_F(Changes, OfProfilesFailAsCreationAndKeepTheFormulas) {
  ConversionParams params = Named(linear, dark);
  params.nMethodMask |= METHOD_FORMULA;
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_BGR, params);
  const Bytes custom = Pixels(converter), formula = Pixels(MakeConverter(CS_RGB, CS_BGR));
  const struct {
    const char* what;
    ConversionParams change;
    int32_t status;
  } kCases[] = {{"no names", Named({}), ERR_PROFILE_NAME},
                {"no file", Named(linear, nowhere), ERR_PROFILE_NAME},
                {"a text", Named(text, dark), ERR_PROFILE_OPEN},
                {"another space", Named(linear, Name(QV_RES) / "cmy.icc"), ERR_PROFILE_OPEN}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Set(converter, CHANGE_PROFILES, c.change), c.status);
    EXPECT_EQ(ConversionStatus(converter), ERR_UNSUPPORTED_METHOD);
    EXPECT_EQ(Activate(converter, METHOD_FORMULA), SUCCESS);
    EXPECT_EQ(Pixels(converter), formula);
    EXPECT_EQ(Activate(converter, METHOD_CUSTOM_ICC), SUCCESS);
    EXPECT_EQ(Set(converter, CHANGE_PROFILES, params), SUCCESS);
    EXPECT_EQ(Pixels(converter), custom);
  }
}

TEST_F(Changes, OfProfilesKeepTheOneInMemoryWhereThereIsNoName) {
  ConversionParams params = Named(dark);  // the name is of no account beside the memory
  params.pSourceProfileMemory = &memory;
  params.pDestProfileMemory = &dark_memory;
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_BGR, params);
  for (const auto& [change, then] : {std::pair{Named({}), Named(linear, dark)},
                                     {Named(srgb), Named(srgb, dark)},
                                     {Named({}, linear), Named({}, linear)}}) {  // the source's memory is gone
    EXPECT_EQ(Set(converter, CHANGE_PROFILES, change), SUCCESS);
    EXPECT_EQ(Pixels(converter), Pixels(MakeConverter(CS_RGB, CS_BGR, then)));
  }
}

// Only these pairs are given a new table; the others lose theirs.
TEST_F(Changes, OfTheTableReleaseIt) {
  const Name table = folder.Write("table.tif", TiffOf(ReadResource("lab_rgb.et")));
  for (const auto& [src, dst, status] : {std::tuple{CS_BGR, CS_LAB, ERR_UNSUPPORTED_METHOD},
                                         {CS_LAB, CS_RGB, ERR_UNSUPPORTED_METHOD},
                                         {CS_LAB, CS_BGR, ERR_UNSUPPORTED_METHOD},
                                         {CS_CMY, CS_RGB, SUCCESS},
                                         {CS_RGB, CS_CMYK, SUCCESS}}) {
    const ConverterPtr converter = MakeConverter(src, dst, TableNamed(table));
    EXPECT_EQ(ConversionStatus(converter), SUCCESS);
    EXPECT_EQ(Set(converter, CHANGE_TABLE, TableNamed(table)), SUCCESS);
    EXPECT_EQ(ConversionStatus(converter), status) << src << " to " << dst;
  }
  // A converter that was made without the method can be given its table.
  const ConverterPtr converter = MakeConverter(CS_CMYK, CS_RGB);
  EXPECT_EQ(Activate(converter, METHOD_CUSTOM_TABLE), SUCCESS);
  EXPECT_EQ(ConversionStatus(converter), ERR_UNSUPPORTED_METHOD);
  EXPECT_EQ(Set(converter, CHANGE_TABLE, TableNamed(table)), SUCCESS);
  EXPECT_EQ(Pixels(converter), Pixels(MakeConverter(CS_CMYK, CS_RGB, TableNamed(table))));
}

TEST_F(Changes, OfEqualSpacesLeaveACopier) {
  const CmykParams black = {12, 900, 0};
  const WhitePointParams d65 = {65, 0, 0};
  const ConversionParams change = With(Named(Name(QV_RES) / "cmyk.icc"), &black, &d65);
  const ConverterPtr cmyk = MakeConverter(CS_CMYK, CS_CMYK), unknown = MakeConverter(200, 200);
  const Bytes source = Pixels(cmyk);
  for (const uint32_t method : {1u, 2u, 4u, 8u}) EXPECT_EQ(Activate(cmyk, method), ERR_UNSUPPORTED_METHOD);
  for (const uint32_t method : {16u, 32u, 77u}) EXPECT_EQ(Activate(cmyk, method), SUCCESS);
  EXPECT_EQ(Set(cmyk, CHANGE_CMYK | CHANGE_WHITE_POINT | CHANGE_PROFILES | CHANGE_TABLE, change), SUCCESS);
  EXPECT_EQ(Pixels(cmyk), source);
  EXPECT_EQ(Set(unknown, CHANGE_CMYK, change), ERR_UNSUPPORTED_METHOD);
  EXPECT_EQ(Set(unknown, CHANGE_PROFILES, change), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(Set(unknown, CHANGE_WHITE_POINT | CHANGE_TABLE, change), SUCCESS);
}

}  // namespace
