#include "base/files.h"

#include <gtest/gtest.h>

#include "base/last_error.h"
#include "support/files.h"
#include "unit/base_system.h"

namespace {
using namespace qv;
using Name = std::basic_string<QWChar>;

// What is read and written, and what stays open after a failure, is shown by those who use files.
TEST(Files, AreTakenAsTheyAreAskedFor) {
  const qv_test::Folder folder("qv_base_files");
  const Name name = folder.In("plain").string<QWChar>();
  const size_t handles = qv_test::OpenHandles();
  File file;
  char bytes[8] = {};
  size_t taken = 99;
  ASSERT_FALSE(file.Open(name.c_str(), Disposition::kReadExisting));
  EXPECT_EQ(static_cast<int>(LastErrorStatus()), 2);  // no such file, by the numbers of both systems
  EXPECT_FALSE(file.IsOpen() || File::Exists(name.c_str()));
  folder.Write("plain", {'x', 'y'});
  ASSERT_TRUE(file.Open(name.c_str(), Disposition::kReadExisting) && File::Exists(name.c_str()));
  EXPECT_TRUE(file.Read(bytes, 8, &taken) && taken == 2 && file.Read(bytes, 8, &taken) && taken == 0);
  EXPECT_FALSE(file.Seek(-1, Origin::kStart) || file.Write("x", 1));
  ASSERT_TRUE(file.Open(name.c_str(), Disposition::kCreateAlways));  // closes what was open, and empties it
  EXPECT_FALSE(file.Read(bytes, 1, &taken));
  EXPECT_TRUE(file.Close() && file.Close());
  EXPECT_EQ(std::filesystem::file_size(name), 0u);
  EXPECT_EQ(qv_test::OpenHandles(), handles);
}

TEST(Files, HaveNamesOfEveryScript) {
  const qv_test::Folder folder("qv_base_files");
  for (const char16_t* script : {u"Цвет и тон", u"色彩管理", u"\U0001F308 rainbow"}) {
    const std::filesystem::path path = folder.In("") / script;
    const Name name = path.string<QWChar>();
    File file;
    EXPECT_TRUE(file.Open(name.c_str(), Disposition::kCreateAlways) && file.Write("0123456789", 10) && file.Close());
    EXPECT_TRUE(File::Exists(name.c_str()) && std::filesystem::file_size(path) == 10);
  }
}

TEST(LastError, IsNeverSuccessOrNegative) {
  for (const uint32_t untold : {0u, 1u, 0x80000000u})
    EXPECT_EQ(static_cast<int>(StatusOfError(untold, 31)), 31) << untold;
}

}  // namespace
