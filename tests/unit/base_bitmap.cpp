#include "base/bitmap.h"

#include <gmock/gmock.h>

#include "base/faults.h"
#include "support/system.h"

namespace {
using namespace qv;
using qv_test::GuardedBuffer;

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
