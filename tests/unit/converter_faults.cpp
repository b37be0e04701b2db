// Every function of converters with its n-th allocation or file call failing: the right code, no handle, and nothing
// left behind; and what a release leaves to the detach.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "base/memory.h"
#include "qvclr/converter.h"
#include "qvclr/library.h"
#include "support/converters.h"
#include "support/files.h"
#include "unit/fault_sweep.h"

namespace {

using namespace qv;
using namespace qv_test;

int Sweep(const std::function<int32_t()>& call, int stride = 1) {
  return SweepAllocations(call, ERR_NO_MEMORY, stride);
}
// Every record, a profile of each side's space, and a table larger than the grid.
struct ConverterFaults : testing::Test {
  ConversionParams Named(uint32_t method, const char* src, const char* dst, const std::filesystem::path& table = {}) {
    ConversionParams params = Params(method);
    // A client's release covers the caller's table only beside a built-in one.
    if (method == METHOD_CUSTOM_TABLE) params.nMethodMask |= METHOD_TABLE;
    for (const auto& [file, name] : {std::pair{src, &params.sSourceProfileName}, {dst, &params.sDestProfileName}})
      if (*file != 0) SetName(std::filesystem::path(QV_RES) / file, *name);
    SetName(table, params.sEmulationTableName);
    return params;
  }
  ConversionParams WithRecords(ConversionParams params) {
    params.pCmykParams = &cmyk;
    params.pSpace1Params = &space1;
    params.pLabParams = &lab;
    params.pWhitePoint = &white;
    return params;
  }

  // Changes a converter without any records, made anew for each fault. The first `told` faults are told.
  int SweepChange(uint32_t src, uint32_t dst, uint32_t active, ConversionParams change, uint32_t bits,
                  int told = 5000) {
    change.nMethodMask = bits;
    change.nActiveMethod = active;
    const auto records = [](const ColorConverter& c) {
      return std::array{c.cmyk_params != nullptr, c.yuv != nullptr, c.lab_to_rgb != nullptr, c.white_point != nullptr};
    };
    return SweepFaults(allocation_faults, [&](Fault& fault) {
      const ConverterPtr converter = MakeConverter(src, dst);
      const auto before = records(*converter);
      // Its release covers whatever it comes to hold.
      const uint8_t some_table = 0;
      converter->method_mask = 31;
      converter->built_in_table = &some_table;
      const int32_t status = fault.During([&] { return Q_ClrSetConversionParams(converter.get(), &change); });
      const bool fails = fault.struck && fault.n <= told;
      EXPECT_EQ(status, fails ? ERR_NO_MEMORY : SUCCESS);
      if (fails) EXPECT_EQ(records(*converter), before);
      uint8_t pixels[8] = {};
      EXPECT_EQ(Q_ClrConvert(converter.get(), pixels, pixels + 4, 1, 1, 0, 0),
                fails && active > METHOD_FORMULA ? ERR_UNSUPPORTED_METHOD : SUCCESS);
    });
  }

  const Folder folder{"qv_converter_faults"};
  const std::filesystem::path larger = folder.Write("larger.tif", TiffOf(Bytes(3 * 100000, 77)));
  const std::filesystem::path small = folder.Write("small.tif", TiffOf(Bytes(3 * 1000, 77)));
  const Bytes srgb = ReadResource("srgb.icc");
  const IccMemoryProfile memory = {16, srgb.data(), static_cast<uint32_t>(srgb.size())};
  const uint8_t luma[256] = {};
  const CmykParams cmyk = {12, 500, 0};
  const Space1Params space1 = {.uStructSize = 44, .pLumaTable = luma, .nLumaTableBytes = 256};
  const LabParams lab = {.uStructSize = 32};
  const WhitePointParams white = {65, 0, 0};
};

TEST_F(ConverterFaults, InCreation) {
  const ConversionParams plain = WithRecords(Params(METHOD_FORMULA)), icc = WithRecords(Params(METHOD_ICC));
  ConversionParams in_memory = WithRecords(Named(METHOD_CUSTOM_ICC, "srgb.icc", ""));
  in_memory.pSourceProfileMemory = in_memory.pDestProfileMemory = &memory;
  ConversionParams all = Named(METHOD_FORMULA, "srgb.icc", "lab.icc", small);
  all.nMethodMask = 31;
  const struct {
    uint32_t src, dst;
    ConversionParams params;
    int least, stride = 1;  // transforms: the engine's own allocations included
  } kCases[] = {{200, 200, Params(METHOD_FORMULA), 2},
                {CS_CMYK_PROFILE, CS_RGB, Params(METHOD_FORMULA), 3},
                {CS_RGB, CS_CMYK, plain, 4},
                {CS_YUV, CS_RGB, plain, 5},
                {CS_LAB, CS_RGB, plain, 5},
                {CS_YUV, CS_LAB, plain, 7},
                {CS_CMYK, CS_RGB, Params(METHOD_TABLE), 3},
                {CS_RGB, CS_LAB, Named(METHOD_CUSTOM_TABLE, "", "", small), 4},
                {CS_CMYK, CS_BGR, Named(METHOD_CUSTOM_TABLE, "", "", larger), 5},
                {CS_RGB, CS_CMYK, icc, 100},
                {CS_RGB, CS_CMY, icc, 100},
                {CS_RGB, CS_LAB, icc, 100},
                {CS_RGB, CS_BGR, icc, 100},
                {CS_RGB, CS_LAB, Named(METHOD_CUSTOM_ICC, "srgb.icc", "lab.icc"), 100, 4},
                {CS_RGB, CS_BGR, in_memory, 100},
                {CS_RGB, CS_RGB, in_memory, 100},
                {CS_CMYK_PROFILE, CS_RGB, Named(METHOD_CUSTOM_ICC, "cmyk.icc", "srgb.icc"), 100, 19},
                {CS_RGB, CS_LAB, all, 200, 19}};
  for (const auto& [src, dst, params, least, stride] : kCases) {
    SCOPED_TRACE(testing::Message() << src << " to " << dst);
    ColorConverter* handle = nullptr;
    const auto init = [&, src = src, dst = dst, &params = params] {
      const int32_t status = Q_ClrInit(&handle, src, dst, &params);
      EXPECT_EQ(handle != nullptr, status == SUCCESS);
      if (handle) EXPECT_EQ(Q_ClrFree(std::exchange(handle, nullptr)), SUCCESS);
      return status;
    };
    EXPECT_GE(Sweep(init, stride), least);
  }
  const ConversionParamsA narrow = {.nActiveMethod = METHOD_FORMULA, .nMethodMask = METHOD_FORMULA};
  EXPECT_EQ(Sweep([&] {
              ColorConverter* handle = nullptr;
              const int32_t status = Q_ClrInitA(&handle, CS_RGB, CS_CMYK, &narrow);
              return status == SUCCESS ? Q_ClrFree(handle) : status;
            }),
            3);
}

TEST_F(ConverterFaults, InChanges) {
  const ConversionParams records = WithRecords(Named(0, "srgb.icc", ""));
  constexpr uint32_t kWhite = CHANGE_WHITE_POINT, kLabToYuv = CHANGE_SPACE1 | CHANGE_LAB | kWhite;
  EXPECT_EQ(SweepChange(CS_YUV, CS_CMYK, 1, records, CHANGE_CMYK | CHANGE_SPACE1 | kWhite), 4);
  EXPECT_EQ(SweepChange(CS_LAB, CS_YUV, 1, records, kLabToYuv), 4);
  EXPECT_GT(SweepChange(CS_RGB, CS_LAB, METHOD_ICC, records, CHANGE_ACTIVE_METHOD | kWhite | CHANGE_LAB), 100);
  EXPECT_GT(SweepChange(CS_RGB, CS_LAB, METHOD_CUSTOM_ICC, records, CHANGE_ACTIVE_METHOD | kWhite | CHANGE_PROFILES),
            100);
  EXPECT_GT(SweepChange(CS_RGB, CS_CMYK, 1, records, CHANGE_CMYK | kWhite | CHANGE_PROFILES), 100);
  constexpr uint32_t kTable = CHANGE_ACTIVE_METHOD | CHANGE_TABLE;
  const ConversionParams table = WithRecords(Named(0, "", "", larger));
  EXPECT_EQ(SweepChange(CS_CMYK, CS_RGB, METHOD_CUSTOM_TABLE, table, kTable, 1), 2);

  // Growth of the luma buffer that the converter has: what it was stays in use.
  const Bytes longer(300, 9);
  const Space1Params growth = {
      .uStructSize = 44, .nFlags = 1 | 16, .nUSpan = 9, .pLumaTable = longer.data(), .nLumaTableBytes = 300};
  ConversionParams grown = WithRecords({.nMethodMask = CHANGE_SPACE1});
  grown.pSpace1Params = &growth;
  const ConverterPtr converter = MakeConverter(CS_YUV, CS_RGB, WithRecords(Params(METHOD_FORMULA)));
  Fault fault{allocation_faults, 1};
  EXPECT_EQ(fault.During([&] { return Q_ClrSetConversionParams(converter.get(), &grown); }), ERR_NO_MEMORY);
  EXPECT_EQ(converter->yuv->luma_bytes, 256u);
  EXPECT_TRUE(converter->yuv->params.nUSpan == 0 && converter->yuv->settings.stored_luma[255] == 0);
}

// Every file call in turn: the first asks for the file's existence, the last closes it, which is no failure.
TEST_F(ConverterFaults, OfFiles) {
  for (const auto& [src, dst, params, read_failure] :
       {std::tuple{CS_RGB, CS_BGR, Named(METHOD_CUSTOM_ICC, "srgb.icc", ""), ERR_PROFILE_OPEN},
        {CS_CMYK, CS_RGB, Named(METHOD_CUSTOM_TABLE, "", "", larger), ERR_FILE_READ}}) {
    std::vector<int32_t> told;
    SweepFaults(file_faults, [&, src = src, dst = dst, &params = params](Fault& fault) {
      ColorConverter* handle = nullptr;
      told.push_back(fault.During([&] { return Q_ClrInit(&handle, src, dst, &params); }));
      EXPECT_EQ(handle != nullptr, told.back() == SUCCESS);
      if (handle) Q_ClrFree(handle);
    });
    ASSERT_GT(told.size(), 6u);
    std::vector<int32_t> expected(told.size(), read_failure);
    expected.front() = ERR_PROFILE_NAME;
    expected.back() = expected[told.size() - 2] = SUCCESS;
    EXPECT_EQ(told, expected);
  }
  // In a change a table is read whole or is zero.
  std::vector<ptrdiff_t> told;
  const ConverterPtr converter = MakeConverter(CS_CMYK, CS_RGB, Named(METHOD_CUSTOM_TABLE, "", "", larger));
  ConversionParams change = Named(0, "", "", larger);
  change.nMethodMask = CHANGE_TABLE;
  constexpr size_t kBytes = 3 * 17 * 17 * 17 * 17;
  for (bool struck = true; struck;) {
    Fault fault{file_faults, static_cast<int>(told.size()) + 1};
    ASSERT_EQ(fault.During([&] { return Q_ClrSetConversionParams(converter.get(), &change); }), SUCCESS);
    ASSERT_TRUE(converter->custom_table);
    told.push_back(std::count(converter->custom_table, converter->custom_table + kBytes, uint8_t{77}));
    struck = fault.struck;
  }
  ASSERT_GT(told.size(), 6u);
  std::vector<ptrdiff_t> expected(told.size(), 0);
  expected.back() = expected[told.size() - 2] = kBytes;
  EXPECT_EQ(told, expected);
}

TEST_F(ConverterFaults, InConversion) {
  Bytes buffer(4 * 64);
  const auto direct = [&](uint32_t from, uint32_t to, size_t shift) {
    return Sweep([&] { return Q_ClrConvertDirect(from, to, buffer.data(), buffer.data() + shift, 8, 4, 0, 0); });
  };
  EXPECT_EQ(direct(CS_CMY, CS_CMYK, 128), 1) << "the RGB frame in between";
  EXPECT_EQ(direct(CS_RGB, CS_CMYK, 0), 1) << "larger pixels over the input need a copy of it";
  EXPECT_EQ(direct(CS_CMYK, CS_RGB, 0), 0) << "smaller ones do not";
  EXPECT_EQ(direct(CS_RGB, CS_RGB, 24), 1);
  const ConverterPtr icc = MakeConverter(CS_RGB, CS_CMYK, Params(METHOD_ICC));
  EXPECT_EQ(Sweep([&] { return Q_ClrConvert(icc.get(), buffer.data(), buffer.data(), 8, 4, 0, 0); }), 1);
  EXPECT_EQ(Sweep([&] {
              BitmapHandle bitmap{};
              const int32_t status =
                  Q_ClrConvertDirectToBitmap(CS_CMYK, CS_RGB, buffer.data(), &bitmap, 32, 2, 2, 0, 0);
              return status == SUCCESS ? Q_FreeBitmap(&bitmap) : status;
            }),
            2);
  // By a converter the last one, for the bitmap's own lines, is not told.
  const ConverterPtr formula = MakeConverter(CS_CMYK, CS_RGB);
  const ConverterPtr ycck = MakeConverter(CS_CMYK_PROFILE, CS_BGR, Params(METHOD_ICC));
  for (const auto& [converter, told] : {std::pair{formula.get(), 1}, {ycck.get(), 2}}) {
    EXPECT_EQ(SweepFaults(allocation_faults,
                          [&, converter = converter, told = told](Fault& fault) {
                            BitmapHandle bitmap{};
                            const int32_t status = fault.During([&] {
                              return Q_ClrConvertToBitmap(converter, buffer.data(), &bitmap, 32, 2, 2, 0, 0);
                            });
                            EXPECT_EQ(status, fault.n <= told ? ERR_NO_MEMORY : SUCCESS);
                            EXPECT_EQ(bitmap.pBits == nullptr, fault.struck);
                            if (bitmap.pBits) EXPECT_EQ(Q_FreeBitmap(&bitmap), SUCCESS);
                          }),
              told + 1);
  }
}

// A converter can come to hold what its method mask does not cover; a client's release leaves that to the detach.
TEST(Release, LeavesToTheDetachWhatTheMaskDoesNotCover) {
  ConverterPtr owner = MakeConverter(CS_RGB, CS_CMYK, Params(METHOD_ICC));
  ColorConverter* converter = owner.release();
  const LedgerTotals with_transform = Ledger();
  converter->method_mask = METHOD_FORMULA | METHOD_CUSTOM_TABLE;
  converter->custom_table = static_cast<uint8_t*>(Allocate(10, 1));
  ASSERT_EQ(Q_ClrFree(converter), SUCCESS);
  EXPECT_EQ(Q_ClrIsValid(converter), ERR_INV_CONVERTER);
  EXPECT_EQ(Ledger().blocks, with_transform.blocks)
      << "all but the white point: the table's bit needs the other table too";
  AttachLibrary();
  ConverterPtr forgotten = MakeConverter(CS_RGB, CS_CMY);
  DetachLibrary();
  EXPECT_EQ(Q_ClrIsValid(forgotten.get()), SUCCESS) << "the process is still attached";
  static_cast<void>(forgotten.release());
  DetachLibrary();
  EXPECT_EQ(Ledger().blocks, 0u);
  AttachLibrary();
  EXPECT_EQ(Q_ClrIsValid(converter), ERR_INV_CONVERTER);
}

}  // namespace
