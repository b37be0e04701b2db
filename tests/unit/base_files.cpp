#include "base/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "base/faults.h"
#include "base/last_error.h"
#include "unit/base_system.h"

namespace {
using namespace qv;
using Name = std::basic_string<QWChar>;

struct Files : testing::Test {
  Files() { std::filesystem::create_directories(folder); }
  ~Files() override { std::filesystem::remove_all(folder); }
  Name In(const std::filesystem::path& name) const { return (folder / name).string<QWChar>(); }

  std::filesystem::path folder = std::filesystem::temp_directory_path() / "qv_base_files";
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
  const size_t handles = qv_test::OpenHandles();
  int n = 0;
  for (bool passed = false; !passed && n < 50;) {
    file_faults.FailNth(++n);
    passed = Session(In("faulty"));
    EXPECT_EQ(passed, file_faults.Armed()) << n;
    EXPECT_EQ(qv_test::OpenHandles(), handles) << n;
  }
  file_faults.FailNth(0);
  EXPECT_EQ(n, 9);  // open, write, close, exists, open, seek, read, close; then none is left to fail
}

TEST(LastError, IsNeverSuccessOrNegative) {
  for (const uint32_t untold : {0u, 1u, 0x80000000u})
    EXPECT_EQ(static_cast<int>(StatusOfError(untold, 31)), 31) << untold;
}

}  // namespace
