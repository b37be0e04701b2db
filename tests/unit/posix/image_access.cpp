// What a file is besides its bytes stays when it is replaced: access rights, links that lead to it, its name in UTF-8.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "IccLoad/profile_bytes.h"
#include "support/converters.h"
#include "support/files.h"
#include "support/image_files.h"

namespace {

using namespace qv_test;
namespace fs = std::filesystem;

TEST(ImageAccess, StaysWhenTheFileIsReplaced) {
  const Folder folder("qv_image_access");
  fs::create_directory(folder.In("elsewhere"));
  const Bytes profile = RandomBytes(100);
  for (const Bytes& image : {MakeTiff({false, false}, {PixelTags()}), JpegOf({kScan})}) {
    const fs::path target = folder.Write("elsewhere/изображение", image), link = folder.In("link");
    fs::create_symlink("elsewhere/изображение", link);
    for (const mode_t mode : {0600u, 0644u, 0640u, 0755u, 0666u, 04711u}) {
      ASSERT_EQ(chmod(target.c_str(), mode), 0);
      IccProfileRecord record;
      Q_InitICCProfile(&record, sizeof record);
      ASSERT_EQ(static_cast<int>(qv::AppendProfileBytes(&record, profile.data(), profile.size())), SUCCESS);
      EXPECT_EQ(Q_SaveICCProfileA(link.c_str(), &record, nullptr), SUCCESS);
      EXPECT_EQ(Q_LoadICCProfileA(target.c_str(), &record, nullptr), SUCCESS);
      EXPECT_EQ(Bytes(record.profileBytes, record.profileBytes + record.profileByteSize), profile);
      Q_FreeICCProfile(&record);
      struct stat status {};
      EXPECT_TRUE(stat(target.c_str(), &status) == 0 && (status.st_mode & 07777) == mode) << std::oct << mode;
      EXPECT_TRUE(fs::is_symlink(link) && fs::is_regular_file(target));
    }
    fs::remove(link);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.In("elsewhere")), {}), 1);
}

}  // namespace
