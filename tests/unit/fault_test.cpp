// Every public call with its n-th allocation failing, for every n: the right code, no handle, and nothing left behind.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <span>

#include "base/bitmap.h"
#include "base/faults.h"
#include "base/memory.h"
#include "qvclr/library.h"
#include "support/converters.h"

namespace {

using namespace qv;
using namespace qv_test;

// Calls until no allocation is left to fail; returns how many there were.
int Sweep(const std::function<int32_t()>& call, int32_t expected = ERR_NO_MEMORY) {
  const LedgerTotals before = Ledger();
  for (int n = 1; n < 5000; ++n) {
    allocation_faults.FailNth(n);
    const int32_t status = call();
    const bool struck = !allocation_faults.Armed();
    allocation_faults.FailNth(0);
    EXPECT_EQ(status, struck ? expected : SUCCESS) << "allocation " << n;
    EXPECT_EQ(Ledger().blocks, before.blocks) << "allocation " << n;
    EXPECT_EQ(Ledger().bytes, before.bytes);
    if (!struck) return n - 1;
  }
  return -1;
}

int SweepInit(uint32_t src, uint32_t dst, const ConversionParams* params) {
  return Sweep([=] {
    ColorConverter* const untouched = reinterpret_cast<ColorConverter*>(uintptr_t{16});
    ColorConverter* handle = untouched;
    const int32_t status = Q_ClrInit(&handle, src, dst, params);
    EXPECT_EQ(handle == untouched, status != SUCCESS);
    if (status == SUCCESS) EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
    return status;
  });
}

TEST(FailingAllocations, InCreation) {
  const uint8_t luma[256] = {};
  const CmykParams cmyk = {12, 500, 0};
  const Space1Params space1 = {.uStructSize = 44, .pLumaTable = luma, .nLumaTableBytes = 256};
  const LabParams lab = {.uStructSize = 32};
  const WhitePointParams white = {65, 0, 0};
  ConversionParams params = Params(METHOD_FORMULA);
  params.pCmykParams = &cmyk;
  params.pSpace1Params = &space1;
  params.pLabParams = &lab;
  params.pWhitePoint = &white;
  EXPECT_EQ(SweepInit(200, 200, nullptr), 2) << "record and node";
  EXPECT_EQ(SweepInit(CS_RGB, CS_CMYK, nullptr), 2);
  EXPECT_EQ(SweepInit(CS_RGB, CS_CMYK, &params), 4) << "and white point and settings";
  EXPECT_EQ(SweepInit(CS_YUV, CS_RGB, &params), 5) << "and the luma table";
  EXPECT_EQ(SweepInit(CS_LAB, CS_RGB, &params), 5) << "two Lab records";
  EXPECT_EQ(SweepInit(CS_YUV, CS_LAB, &params), 7);
  params.nActiveMethod = params.nMethodMask = METHOD_ICC;
  for (const uint32_t space : {CS_CMYK, CS_CMY, CS_LAB, CS_BGR}) {
    EXPECT_GT(SweepInit(CS_RGB, space, &params), 100) << "the engine's own allocations included";
  }

  const ConversionParamsA narrow = {.nActiveMethod = METHOD_FORMULA, .nMethodMask = METHOD_FORMULA};
  EXPECT_EQ(Sweep([&] {
              ColorConverter* handle = nullptr;
              const int32_t status = Q_ClrInitA(&handle, CS_RGB, CS_CMYK, &narrow);
              return status == SUCCESS ? Q_ClrFree(handle) : status;
            }),
            3);
}

TEST(FailingAllocations, InConversion) {
  std::vector<uint8_t> buffer(4 * 64);
  const auto direct = [&](uint32_t from, uint32_t to, size_t shift) {
    return Sweep([&] { return Q_ClrConvertDirect(from, to, buffer.data(), buffer.data() + shift, 8, 4, 0, 0); });
  };
  EXPECT_EQ(direct(CS_CMY, CS_CMYK, 128), 1) << "the RGB frame in between";
  EXPECT_EQ(direct(CS_RGB, CS_CMYK, 0), 1) << "larger pixels over the input need a copy of it";
  EXPECT_EQ(direct(CS_CMYK, CS_RGB, 0), 0) << "smaller ones do not";
  EXPECT_EQ(direct(CS_RGB, CS_BGR, 0), 0);
  EXPECT_EQ(direct(CS_RGB, CS_RGB, 24), 1);
  const ConverterPtr icc = MakeConverter(CS_RGB, CS_CMYK, Params(METHOD_ICC));
  EXPECT_EQ(Sweep([&] { return Q_ClrConvert(icc.get(), buffer.data(), buffer.data(), 8, 4, 0, 0); }), 1);
  EXPECT_EQ(Sweep([&] { return Q_ClrConvert(icc.get(), buffer.data(), buffer.data() + 96, 8, 4, 0, 0); }), 0);
}

TEST(FailingAllocations, InBitmaps) {
  const uint8_t block[12] = {};
  EXPECT_EQ(Sweep([&] {
              BitmapHandle bitmap{};
              const Status status = FillBitmap(&bitmap, sizeof bitmap, {2, -2}, block, 6);
              return Ok(status) ? Q_FreeBitmap(&bitmap) : static_cast<int32_t>(status);
            }),
            1);
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
  ConverterPtr forgotten = MakeConverter(CS_RGB, CS_CMY);
  static_cast<void>(forgotten.release());
  DetachLibrary();
  EXPECT_EQ(Ledger().blocks, 0u);
  AttachLibrary();
  EXPECT_EQ(Q_ClrIsValid(converter), ERR_INV_CONVERTER);
}

TEST(Attachment, IsCounted) {
  AttachLibrary();
  ConverterPtr converter = MakeConverter(CS_RGB, CS_CMY);
  DetachLibrary();
  EXPECT_EQ(Q_ClrIsValid(converter.get()), SUCCESS) << "the process is still attached";
}

}  // namespace
