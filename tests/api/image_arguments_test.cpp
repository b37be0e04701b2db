// What the functions for profiles in image files are given: arguments, records, names, and what comes back of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Qvclr15x.h"
#include "support/converters.h"
#include "support/files.h"
#include "support/image_files.h"

namespace {

using namespace qv_test;
namespace fs = std::filesystem;

struct ImageArguments : testing::Test {
  ImageArguments() {
    Q_InitICCProfile(&record, sizeof record);
    folder.Write("with.tif", TiffWith(profile));
    folder.Write("without.tif", MakeTiff({true, false}, {PixelTags()}));
    folder.Write("none.jpg", JpegOf({kScan}));
    folder.Write("damaged.jpg", JpegOf({Segment(0xE1, {}), IccSegment(1, 1, {1, 2}), {0xFF, 0xE2, 0, 9, 1}}));
    folder.Write("thirteen.jpg",
                 JpegOf({IccSegment(1, 1, {3, 4}), Segment(0xE2, Text({"ICC_PROFILE\0\1", 13})), kScan}));
    folder.Write("empty.jpg", JpegOf({IccSegment(1, 1, {}), IccSegment(7, 0, {5}), kScan}));
    folder.Write("behind.jpg", JpegOf({Joined({kScan, IccSegment(1, 1, {5})})}));
    folder.Write("tables.jpg", JpegOf({IccSegment(1, 1, {6}), {0xFF, 0xD9}}));
    folder.Write("none.ps", Text("%!PS"));
    folder.Write("binary.ps", Text("\xC5\xD0\xD3\xC6 %%BeginICCProfile:"));
    folder.Write("image.gif", Joined({Text("GIF87a"), {0x3B}}));
    folder.Write("other.gif", Text("GIF88a;"));
    folder.Write("empty", {});
  }
  ~ImageArguments() override { Q_FreeICCProfile(&record); }

  int32_t Load(const fs::path& path) { return Q_LoadICCProfile(path.string<QWChar>().c_str(), &record, nullptr); }
  int32_t Save(const fs::path& path) { return Q_SaveICCProfile(path.string<QWChar>().c_str(), &record, nullptr); }
  Bytes Held() const { return {record.profileBytes, record.profileBytes + record.profileByteSize}; }

  const Bytes profile = RandomBytes(100);
  Folder folder{"qv_image_arguments"};
  IccProfileRecord record;
};

TEST_F(ImageArguments, LoadTellsWhatIsWrong) {
  struct Case {
    const char* name;
    int32_t status;
    Bytes held;
  };
  const Case cases[] = {{"with.tif", SUCCESS, profile},
                        {"without.tif", ERR_ICC_PROFILE_NOT_FOUND, profile},
                        {"none.jpg", ERR_ICC_PROFILE_NOT_FOUND, profile},
                        {"behind.jpg", ERR_ICC_PROFILE_NOT_FOUND, profile},
                        {"none.ps", ERR_ICC_PROFILE_NOT_FOUND, profile},
                        {"tables.jpg", SUCCESS, {6}},
                        {"empty.jpg", SUCCESS, {5}},
                        {"damaged.jpg", ERR_ICC_PROFILE_DATA, {1, 2}},  // what was read before stays
                        {"thirteen.jpg", ERR_FAILURE, {3, 4}},
                        {"binary.ps", ERR_ICC_PROFILE_NO_DATA, {}},
                        {"image.gif", ERR_ICC_FORMAT_NOT_SUPPORTED, {}},
                        {"other.gif", ERR_ICC_FORMAT_NOT_SUPPORTED, {}},
                        {"empty", ERR_ICC_FORMAT_NOT_SUPPORTED, {}},
                        {"missing", ERR_FILE_ACCESS, {}},
                        {"", ERR_FILE_ACCESS, {}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_EQ(Load(folder.In("with.tif")), SUCCESS);
    EXPECT_EQ(Load(folder.In(c.name)), c.status);
    EXPECT_EQ(Held(), c.held);
    ASSERT_EQ(Load(folder.In("with.tif")), SUCCESS);
    EXPECT_EQ(Q_LoadICCProfileA(folder.In(c.name).string().c_str(), &record, nullptr), c.status);
    EXPECT_EQ(Held(), c.held);
  }
}

TEST_F(ImageArguments, SaveTellsWhatIsWrong) {
  const std::tuple<const char*, int32_t, int32_t> cases[] = {
      {"with.tif", SUCCESS, SUCCESS},
      {"none.jpg", SUCCESS, SUCCESS},
      {"damaged.jpg", ERR_ICC_PROFILE_DATA, ERR_ICC_PROFILE_DATA},
      {"image.gif", SUCCESS, ERR_INV_PARAMETER},
      {"none.ps", ERR_ICC_FORMAT_NOT_SUPPORTED, ERR_ICC_FORMAT_NOT_SUPPORTED},
      {"empty", ERR_ICC_FORMAT_NOT_SUPPORTED, ERR_ICC_FORMAT_NOT_SUPPORTED},
      {"missing", ERR_FILE_ACCESS, ERR_FILE_ACCESS}};
  ASSERT_EQ(Load(folder.In("with.tif")), SUCCESS);
  for (const auto& [name, status, of_none] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Save(folder.In(name)), status);
    EXPECT_EQ(Q_SaveICCProfileA(folder.In(name).string().c_str(), &record, nullptr), status);
    record.profileByteSize = 0;
    EXPECT_EQ(Save(folder.In(name)), of_none);
    for (const uint64_t bytes : {profile.size() + 1, size_t{UINT32_MAX} + 2, SIZE_MAX}) {
      record.profileByteSize = bytes;
      EXPECT_EQ(Save(folder.In(name)), ERR_ICC_INVALID_PROFILE);
    }
    record.profileByteSize = profile.size();
    EXPECT_EQ(Held(), profile);
  }
}

TEST_F(ImageArguments, RefusedOnesChangeNothing) {
  const fs::path path = folder.In("with.tif");
  ASSERT_EQ(Load(path), SUCCESS);
  const Bytes file = Contents(path);
  const auto name = path.string<QWChar>();
  const std::string narrow_name = path.string(), long_name(300, 'x');
  for (const auto& [wide, narrow] :
       {std::pair(&Q_LoadICCProfile, &Q_LoadICCProfileA), {&Q_SaveICCProfile, &Q_SaveICCProfileA}}) {
    EXPECT_EQ(wide(nullptr, &record, nullptr), ERR_INV_PARAMETER);
    EXPECT_EQ(narrow(nullptr, &record, nullptr), ERR_INV_PARAMETER);
    EXPECT_EQ(wide(name.c_str(), nullptr, nullptr), ERR_INV_PARAMETER);
    EXPECT_EQ(narrow(narrow_name.c_str(), nullptr, nullptr), ERR_INV_PARAMETER);
    EXPECT_EQ(narrow(long_name.c_str(), &record, nullptr), ERR_FAILURE);
    for (const uint32_t bytes : {0u, 55u, 57u}) {
      record.structSize = bytes;
      EXPECT_EQ(wide(name.c_str(), &record, nullptr), ERR_INV_STRUCT_SIZE);
    }
    record.structSize = sizeof record;
  }
  EXPECT_EQ(Held(), profile);
  EXPECT_EQ(Contents(path), file);
  const fs::path foreign = folder.In("") / u"\U0001F308 色彩.jpg";
  fs::copy_file(folder.In("none.jpg"), foreign);
  EXPECT_TRUE(Save(foreign) == SUCCESS && Load(foreign) == SUCCESS && Held() == profile);
}

}  // namespace
