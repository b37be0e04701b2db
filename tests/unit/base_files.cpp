#include "base/files.h"

#include <gtest/gtest.h>

#include "base/last_error.h"
#include "support/files.h"
#include "unit/fault_sweep.h"

namespace {
using namespace qv;
using Name = std::basic_string<QWChar>;

struct Files : testing::Test {
  Name In(const std::filesystem::path& name) const { return (folder.In("") / name).string<QWChar>(); }
  const qv_test::Folder folder{"qv_base_files"};
};

// Writes ten digits and reads five of them back; false at the first failure.
bool Session(const Name& name) {
  File file;
  char bytes[5];
  size_t taken = 0;
  return file.Open(name.c_str(), Disposition::kCreateAlways) && file.Write("0123456789", 10) && file.Close() &&
         File::Exists(name.c_str()) && file.Open(name.c_str(), Disposition::kReadExisting) &&
         file.Seek(3, Origin::kStart) && file.Read(bytes, 5, &taken) && taken == 5 &&
         std::string_view(bytes, 5) == "34567" && file.Close();
}

TEST_F(Files, AreReadAsWritten) {
  const size_t handles = qv_test::OpenHandles();
  const Name name = In("plain");
  File file;
  char bytes[20] = {};
  size_t taken = 99;
  int64_t position = -1;
  ASSERT_FALSE(file.Open(name.c_str(), Disposition::kReadExisting));
  EXPECT_EQ(static_cast<int>(LastErrorStatus()), 2);  // no such file, by the numbers of both systems
  EXPECT_FALSE(file.IsOpen() || File::Exists(name.c_str()));

  ASSERT_TRUE(Session(name) && file.Open(name.c_str(), Disposition::kReadExisting));
  EXPECT_TRUE(file.Seek(-4, Origin::kEnd, &position) && position == 6);
  EXPECT_TRUE(file.Read(bytes, 1, &taken) && bytes[0] == '6');
  EXPECT_TRUE(file.Seek(1, Origin::kCurrent, &position) && position == 8);
  EXPECT_TRUE(file.Read(bytes, 20, &taken) && std::string_view(bytes, taken) == "89");
  EXPECT_TRUE(file.Read(bytes, 20, &taken) && taken == 0);
  EXPECT_FALSE(file.Seek(-1, Origin::kStart) || file.Write("x", 1));

  ASSERT_TRUE(file.Open(name.c_str(), Disposition::kCreateAlways));  // closes what was open, and empties it
  EXPECT_FALSE(file.Read(bytes, 1, &taken));
  EXPECT_TRUE(file.Close() && file.Close());
  EXPECT_EQ(std::filesystem::file_size(name), 0u);
  EXPECT_EQ(qv_test::OpenHandles(), handles);
}

TEST_F(Files, HaveNamesOfEveryScript) {
  for (const char16_t* name : {u"Цвет и тон", u"色彩管理", u"\U0001F308 rainbow"}) {
    EXPECT_TRUE(Session(In(name)) && std::filesystem::file_size(In(name)) == 10);
  }
}

TEST_F(Files, HoldNoHandleAfterTheFailureOfAnyCall) {
  EXPECT_EQ(qv_test::SweepFaults(file_faults,
                                 [&](qv_test::Fault& fault) {
                                   const bool passed = fault.During([&] { return Session(In("faulty")); }) != 0;
                                   EXPECT_NE(passed, fault.struck);
                                 }),
            8);  // open, write, close, exists, open, seek, read, close
}

TEST(LastError, IsNeverSuccessOrNegative) {
  for (const uint32_t untold : {0u, 1u, 0x80000000u})
    EXPECT_EQ(static_cast<int>(StatusOfError(untold, 31)), 31) << untold;
}

}  // namespace
