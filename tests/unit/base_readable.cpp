#include "base/readable.h"

#include <gtest/gtest.h>

#include "unit/base_system.h"

namespace {
using namespace qv_test;

bool AnswersRightly(const Range& range) {
  return qv::IsReadable(range.begin, range.bytes) == range.readable &&
         qv::IsWritable(range.begin, range.bytes) == range.writable;
}

TEST(Readable, TellsWhoMayTouchARangeAndTouchesNothing) {
  const Ranges ranges;
  for (const Range& range : ranges.All()) {
    EXPECT_TRUE(AnswersRightly(range)) << range.what;
    EXPECT_TRUE(AnswersRightly({"empty", range.begin, 0, true, true})) << range.what;
    EXPECT_TRUE(AnswersRightly({"wraps", range.begin, SIZE_MAX, false, false})) << range.what;
  }
  EXPECT_TRUE(ranges.Unchanged());
  EXPECT_TRUE(AnswersRightly({"null, empty", nullptr, 0, true, true}));
  EXPECT_TRUE(AnswersRightly({"null", nullptr, 1, false, false}));
  EXPECT_TRUE(AnswersRightly({"the last byte", Address(UINTPTR_MAX), 1, false, false}));
  uint8_t* page = MapPages(1);
  EXPECT_TRUE(AnswersRightly({"mapped", page, PageSize(), true, true}));
  UnmapPages(page, 1);
  EXPECT_TRUE(AnswersRightly({"unmapped", page, 1, false, false}));
}

TEST(Readable, IsRightWhileOtherThreadsMapAndWrite) { EXPECT_EQ(ErrorsInAStorm(AnswersRightly), 0); }

}  // namespace
