#include "base/readable.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "base/readable_posix.h"
#include "unit/base_system.h"

namespace {
using namespace qv;
using namespace qv_test;

struct Way {
  const char* name;
  Verdict (*ask)(uintptr_t begin, uintptr_t end, Access access);

  Verdict Ask(const void* memory, size_t bytes, Access access) const {
    return ask(reinterpret_cast<uintptr_t>(memory), reinterpret_cast<uintptr_t>(memory) + bytes, access);
  }
  bool Exists() const { return Ask(this, 1, Access::kRead) != Verdict::kUnknown; }  // on this kernel
  // Where a way exists it must know the good ranges; of the bad ones it may know nothing.
  bool AnswersRightly(const Range& range) const {
    return !Exists() || ((Ask(range.begin, range.bytes, Access::kRead) == Verdict::kYes) == range.readable &&
                         (Ask(range.begin, range.bytes, Access::kWrite) == Verdict::kYes) == range.writable);
  }
};
constexpr Way kKernelMap = {"kernel map",
                            [](uintptr_t begin, uintptr_t end, Access access) {
                              Mapping last;
                              return AskKernelMap(begin, end, access, &last);
                            }},
              kMapText = {"map text", AskMapText};

TEST(ReadableOnLinux, EachWayIsRightByItself) {
  EXPECT_TRUE(kMapText.Exists());  // everywhere
  for (const Way& way : {kKernelMap, Way{"populating", AskByPopulating}, kMapText}) {
    const Ranges ranges;
    for (const Range& range : ranges.All()) EXPECT_TRUE(way.AnswersRightly(range)) << way.name << ": " << range.what;
    EXPECT_TRUE(ranges.Unchanged()) << way.name;
    EXPECT_EQ(ErrorsInAStorm([&](const Range& range) { return way.AnswersRightly(range); }), 0) << way.name;
  }
}

TEST(ReadableOnLinux, ChildOfForkSeesItsOwnMap) {
  const Ranges of_parent;
  ASSERT_TRUE(IsReadable(of_parent.good, 2 * PageSize()));
  const pid_t child = fork();
  if (child == 0) {
    const uint8_t* of_child = MapPages(1);
    Protect(of_parent.good, 1, Protection::kNone);
    UnmapPages(of_parent.good + PageSize(), 1);
    const bool lost = !IsReadable(of_parent.good, 1) && !IsReadable(of_parent.good + PageSize(), 1);
    _exit(lost && IsWritable(of_child, PageSize()) ? 0 : 1);
  }
  int result = -1;
  EXPECT_EQ(waitpid(child, &result, 0), child);
  EXPECT_EQ(result, 0);
  EXPECT_TRUE(IsReadable(of_parent.good, 2 * PageSize()));
}

// The descriptor that the library keeps: -1 when there is none.
int KeptDescriptor() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry, gone).filename() == "maps") return std::stoi(entry.path().filename());
  }
  return -1;
}

TEST(ReadableOnLinux, SurvivesAHostThatClosesEveryDescriptor) {
  if (!kKernelMap.Exists()) GTEST_SKIP() << "this kernel's map is not asked by a descriptor";
  const Ranges ranges;
  const auto right = [&] { return IsReadable(ranges.good, 1) && !IsReadable(ranges.end, 1); };
  close(KeptDescriptor());
  EXPECT_TRUE(right());
  // The number stands for a file of the host now, which the library must neither ask nor close.
  const int null = open("/dev/null", O_RDONLY | O_CLOEXEC), first = dup2(null, KeptDescriptor());
  EXPECT_TRUE(right());
  const int second = dup2(null, KeptDescriptor());
  CloseKernelMap();
  for (const int of_host : {first, second, null}) EXPECT_EQ(close(of_host), 0);
  EXPECT_TRUE(right());
}

TEST(ReadableOnLinux, LeaksNoDescriptorWhenThreadsOpenTheMapAtOnce) {
  CloseKernelMap();
  const size_t before = OpenHandles();
  for (int round = 0; round < 500; ++round) {
    std::atomic<int> late{2};
    std::vector<std::jthread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([&] {
        for (--late; late > 0;) continue;
        EXPECT_TRUE(IsReadable(&late, 1) && kMapText.Exists());
      });
    }
    threads.clear();
    CloseKernelMap();
  }
  EXPECT_EQ(OpenHandles(), before);
}

}  // namespace
