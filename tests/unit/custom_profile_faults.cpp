// The making of a caller's transform with its n-th allocation or file call failing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "base/faults.h"
#include "base/memory.h"
#include "support/converters.h"
#include "unit/base_system.h"

namespace {

using namespace qv;
using namespace qv_test;

// Creates with ever later faults until none strikes; every failure leaves nothing behind. Gives the codes.
std::set<int32_t> CodesOf(FaultHook& faults, const ConversionParams& params) {
  const LedgerTotals before = Ledger();
  const size_t handles = OpenHandles();
  std::set<int32_t> codes;
  for (int n = 1; n < 5000; ++n) {
    ColorConverter* handle = nullptr;
    faults.FailNth(n);
    const int32_t status = Q_ClrInit(&handle, CS_CMYK, CS_RGB, &params);
    const bool struck = !faults.Armed();
    faults.FailNth(0);
    if (!struck) EXPECT_EQ(status, SUCCESS) << n;
    if (status == SUCCESS) EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
    EXPECT_EQ(Ledger().blocks, before.blocks) << n;
    EXPECT_EQ(Ledger().bytes, before.bytes) << n;
    EXPECT_EQ(OpenHandles(), handles) << n;
    if (!struck) return codes;
    codes.insert(status);
  }
  ADD_FAILURE() << "the faults never end";
  return codes;
}

TEST(CustomProfileFaults, LeaveNothingBehind) {
  const auto name = std::filesystem::path(QV_RES "/cmyk.icc").string<QWChar>();
  std::vector<uint8_t> bytes(10000);
  std::FILE* file = std::fopen(QV_RES "/srgb.icc", "rb");
  const IccMemoryProfile memory = {0, bytes.data(),
                                   static_cast<uint32_t>(std::fread(bytes.data(), 1, bytes.size(), file))};
  std::fclose(file);
  const WhitePointParams white = {65, 0, 0};
  ConversionParams params = Params(METHOD_CUSTOM_ICC);
  params.pWhitePoint = &white;
  std::ranges::copy(name, params.sSourceProfileName);
  params.pDestProfileMemory = &memory;
  EXPECT_TRUE(MakeConverter(CS_CMYK, CS_RGB, params));  // opens what the process keeps
  EXPECT_EQ(CodesOf(allocation_faults, params), std::set<int32_t>{ERR_NO_MEMORY});
  EXPECT_EQ(CodesOf(file_faults, params), (std::set<int32_t>{ERR_PROFILE_OPEN, ERR_PROFILE_NAME, SUCCESS}))
      << "a file that was read need not close";
}

}  // namespace
