// Rows that the catalogue of kernels does not hold.
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include "qvclr/kernels/kernels.h"
#include "qvclr/ycbcr_tables.h"
#include "qvclr/yuv_settings.h"
#include "support/bytes.h"

namespace {

using namespace qv;
using namespace qv_test;

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

}  // namespace
