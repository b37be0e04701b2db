#include "base/bitmap.h"

#include <gmock/gmock.h>

#include "base/faults.h"
#include "support/system.h"

namespace {
using namespace qv;
using qv_test::GuardedBuffer;

TEST(Bitmap, LeavesNoPaddingBehindItsBlockAndTakesAnyDistance) {
  for (const auto& [width, height, distance] : {std::tuple{1, 3, 3}, {2, -2, 6}, {3, 2, 1000}, {7, 3, 70000}}) {
    const auto columns = static_cast<size_t>(width) * 3, lines = static_cast<size_t>(std::abs(height));
    GuardedBuffer block(static_cast<size_t>(distance) * (lines - 1) + columns);
    for (size_t i = 0; i < block.size(); ++i) block.data()[i] = static_cast<uint8_t>(i % 251 + 1);
    BitmapHandle bitmap{};
    ASSERT_EQ(FillBitmap(&bitmap, 32, {width, height}, block.data(), static_cast<size_t>(distance)), kSuccess);
    EXPECT_TRUE(bitmap.nWidth == width && bitmap.nHeight == height);
    const uint8_t* last = bitmap.pBits + (lines - 1) * bitmap.nLineBytes;
    EXPECT_EQ(std::memcmp(last, block.data() + (lines - 1) * static_cast<size_t>(distance), columns), 0) << width;
    EXPECT_EQ(Q_FreeBitmap(&bitmap), SUCCESS);
  }
}

TEST(Bitmap, FailuresHaveTheirStatusAndLeaveTheRecord) {
  GuardedBuffer place(sizeof(BitmapHandle));
  auto* bitmap = reinterpret_cast<BitmapHandle*>(place.data());
  auto* cut_short = reinterpret_cast<BitmapHandle*>(place.data() + 8);
  const auto fill = [](BitmapHandle* to, uint32_t size, BitmapHeader header) {
    const uint8_t block[24] = {};
    return FillBitmap(to, size, header, block, 12);
  };
  EXPECT_EQ(fill(bitmap, 31, {4, 2}), kInvalidStructSize);
  EXPECT_EQ(fill(cut_short, 32, {4, 2}), kBadPointer);
  for (const BitmapHeader bad : {BitmapHeader{0, 2}, {-4, 2}, {4, 0}})
    EXPECT_EQ(fill(bitmap, 32, bad), kInvalidParameter);
  for (const BitmapHeader large : {BitmapHeader{1, INT32_MIN}, {INT32_MAX, INT32_MAX}, {1 << 20, 1366}})
    EXPECT_EQ(fill(bitmap, 32, large), kNoMemory);
  allocation_faults.FailNth(1);
  EXPECT_EQ(fill(bitmap, 32, {4, 2}), kNoMemory);
  EXPECT_THAT(place.bytes(), testing::Each(0));
  EXPECT_EQ(Q_FreeBitmap(nullptr), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_FreeBitmap(cut_short), ERR_BAD_POINTER);
  EXPECT_EQ(Q_FreeBitmap(bitmap), ERR_INV_STRUCT_SIZE);  // nothing was filled
  ASSERT_EQ(fill(bitmap, 32, {4, 2}), kSuccess);
  EXPECT_EQ(Q_FreeBitmap(bitmap), SUCCESS);
  EXPECT_THAT(place.bytes(), testing::Each(0));
}

}  // namespace
