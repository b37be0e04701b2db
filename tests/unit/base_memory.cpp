#include "base/memory.h"

#include <gmock/gmock.h>

#include <span>
#include <thread>
#include <vector>

#include "base/bitmap.h"
#include "base/faults.h"

namespace {
using namespace qv;
using testing::Each, testing::ElementsAre;

std::span<uint8_t> Bytes(void* block, size_t size) { return {static_cast<uint8_t*>(block), size}; }

std::vector<LedgerEntry> LiveBlocks() {
  std::vector<LedgerEntry> blocks;
  const auto add = [](const LedgerEntry& entry, void* user) { static_cast<decltype(&blocks)>(user)->push_back(entry); };
  ListLedger(add, &blocks);
  return blocks;
}

TEST(Memory, BlocksAreZeroAlsoWhereOthersStoodAndKnowTheirOrigin) {
  const LedgerTotals before = Ledger();
  for (const size_t size : {0u, 1u, 1u, 100u, 100u, 70000u, 70000u}) {
    void* block = Allocate(1, size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_THAT(Bytes(block, size), Each(0)) << size;
    EXPECT_EQ(LiveBlocks().front().bytes, size);
    EXPECT_EQ(LiveBlocks().front().line, __LINE__ - 4u);
    EXPECT_STREQ(LiveBlocks().front().file, "tests/unit/base_memory.cpp");
    std::ranges::fill(Bytes(block, size), uint8_t{0xFF});
    Release(block);
  }
  BitmapHandle bitmap{};
  ASSERT_EQ(FillBitmap(&bitmap, sizeof bitmap, {1, 1}, std::vector<uint8_t>(3).data(), 3), kSuccess);
  EXPECT_STREQ(LiveBlocks().front().file, "Common/base/bitmap.cpp");
  EXPECT_EQ(FreeBitmap(&bitmap), kSuccess);
  EXPECT_EQ(LiveBlocks().size(), before.blocks);
}

TEST(Memory, SizesThatCannotBeMetGiveNullAndKeepTheImage) {
  constexpr size_t kHalf = SIZE_MAX / 2 + 1, kWithoutItsEntry = SIZE_MAX - 8, kMoreThanAnyMachineHas = SIZE_MAX / 8;
  EXPECT_EQ(Allocate(kHalf, 2), nullptr);
  EXPECT_EQ(Allocate(3, kHalf), nullptr);
  EXPECT_EQ(NewArray<uint64_t>(SIZE_MAX / 8 + 2), nullptr);
  const LedgerTotals before = Ledger();
  void* image = ResizeImage(nullptr, 3);
  std::ranges::fill(Bytes(image, 3), uint8_t{7});
  for (const size_t size : {SIZE_MAX, kWithoutItsEntry, kMoreThanAnyMachineHas}) {
    EXPECT_EQ(Allocate(size, 1), nullptr);
    EXPECT_EQ(AllocateImage(size), nullptr);
    EXPECT_EQ(ResizeImage(image, size), nullptr);
    EXPECT_EQ(LiveBlocks().size(), before.blocks + 1);
  }
  image = ResizeImage(image, 2);
  image = ResizeImage(image, 4);  // the third byte is new again
  EXPECT_THAT(Bytes(image, 4), ElementsAre(7, 7, 0, 0));
  image = ResizeImage(image, 100000);
  EXPECT_TRUE(Bytes(image, 2)[1] == 7 && std::ranges::count(Bytes(image, 100000), 0) == 99998);
  ReleaseImage(image);
  EXPECT_EQ(Ledger().bytes, before.bytes);
}

TEST(Memory, LedgerIsConsistentUnderThreads) {
  const LedgerTotals before = Ledger();
  std::vector<void*> kept(8);
  std::vector<std::jthread> threads;
  for (void*& last : kept) {
    threads.emplace_back([&last] {
      for (size_t i = 1; i < 2000; ++i) {
        ReleaseImage(std::exchange(last, ResizeImage(AllocateImage(i), 2 * i)));
      }
    });
  }
  threads.clear();
  EXPECT_EQ(LiveBlocks().size(), before.blocks + 8);
  EXPECT_EQ(Ledger().bytes, before.bytes + 8 * 2 * 1999);
  for (void* last : kept) ReleaseImage(last);
  EXPECT_EQ(Ledger().bytes, before.bytes);
}

}  // namespace
