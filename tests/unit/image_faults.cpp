// Image files cut short and altered, and every file call and allocation failing: a status, nothing left behind, and
// after a save either the old file or the new one.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/memory.h"
#include "support/converters.h"
#include "support/files.h"
#include "support/image_files.h"
#include "unit/fault_sweep.h"

namespace {

using namespace qv;
using namespace qv_test;
namespace fs = std::filesystem;

IccProfileRecord RecordOf(const Bytes& profile) {
  IccProfileRecord record;
  Q_InitICCProfile(&record, sizeof record);
  if (profile.empty()) return record;
  record.profileBytes = static_cast<uint8_t*>(AllocateImage(profile.size()));
  std::ranges::copy(profile, record.profileBytes);
  record.profileByteSize = profile.size();
  return record;
}
int32_t Load(const fs::path& path, IccProfileRecord* record) {
  return Q_LoadICCProfile(path.string<QWChar>().c_str(), record, nullptr);
}
int32_t Save(const fs::path& path, IccProfileRecord* record) {
  return Q_SaveICCProfile(path.string<QWChar>().c_str(), record, nullptr);
}

struct Sample {
  const char* what;
  Bytes file;
  bool altered;  // by numbers of which no other sample has the kind
};
std::vector<Sample> Samples() {
  const Bytes profile = RandomBytes(24);
  const auto tiff = [&](bool motorola, bool big) {
    std::vector<TiffTag> first = PixelTags();
    first.push_back({282, 5, {1, 3}});
    first.push_back(ProfileTag(profile));
    std::ranges::sort(first, {}, &TiffTag::tag);
    return MakeTiff({motorola, big}, {first, {{256, 3, {1}}}});
  };
  const Bytes jpeg = JpegOf({Segment(0xE0, Text("JFIF")), Joined({{0xFF, 0xFF}, IccSegment(1, 2, profile)}),
                             Segment(0xE2, Text("x")), IccSegment(2, 2, profile), kScan});
  std::string lines = "%!PS\r\n%%BeginICCProfile: 1\r\n% ";
  for (int i = 0; i < 100; ++i) lines += i % 30 == 29 ? "0F\r\n% " : "a1";
  const Bytes picture =
      Joined({Bytes(10), {0, 0x11, 2, 0xFF, 1, 0xE0, 0, 28, 0, 0, 0, 0}, profile, {0xE0, 0, 4, 0, 0, 0, 2}});
  return {{"II", tiff(false, false), false},
          {"MM", tiff(true, false), true},
          {"II, big", tiff(false, true), true},
          {"MM, big", tiff(true, true), false},
          {"JPEG", jpeg, true},
          {"PostScript", Text(lines + "\r\n%%EndICCProfile\r\n"), true},
          {"picture", picture, true},
          {"GIF", Joined({Text("GIF89a"), Bytes(10), {0x3B}}), false}};
}

struct ImageFaults : testing::Test {
  ImageFaults() {
    IsReadable(this, 1);  // opens what the process keeps
    before = Ledger();
    handles = OpenHandles();
  }
  // Nothing but the image in the folder, nothing open, nothing allocated.
  testing::AssertionResult Clean() const {
    const auto files = std::distance(fs::directory_iterator(folder.In("")), {});
    if (files == 1 && OpenHandles() == handles && Ledger().blocks == before.blocks) return testing::AssertionSuccess();
    return testing::AssertionFailure() << files << " files, " << OpenHandles() << " handles for " << handles << ", "
                                       << Ledger().blocks << " blocks for " << before.blocks;
  }
  // Loads from a file of any content and saves there.
  void Endure(const Bytes& content) {
    const fs::path path = folder.Write("image", content);
    const Bytes profile = RandomBytes(100, 3);
    IccProfileRecord record = RecordOf({1, 2, 3}), source = RecordOf(profile);
    const int32_t loaded = Load(path, &record), saved = Save(path, &source);
    EXPECT_TRUE(loaded == SUCCESS || loaded == ERR_FAILURE || loaded == ERR_ICC_PROFILE_NOT_FOUND ||
                loaded == ERR_ICC_PROFILE_DATA || loaded == ERR_ICC_PROFILE_NO_DATA ||
                loaded == ERR_ICC_FORMAT_NOT_SUPPORTED)
        << loaded;
    EXPECT_EQ(BytesOf(record.profileBytes), size_t{record.profileByteSize});
    EXPECT_TRUE(saved == SUCCESS || saved == ERR_ICC_FORMAT_NOT_SUPPORTED || saved == ERR_ICC_PROFILE_DATA ||
                saved == ERR_FILE_WRITE)
        << saved;
    if (saved != SUCCESS) {
      EXPECT_EQ(Contents(path), content);
    } else if (content[0] != 'G') {
      EXPECT_EQ(Load(path, &source), SUCCESS);
      EXPECT_EQ(Bytes(source.profileBytes, source.profileBytes + source.profileByteSize), profile);
    }
    ++(saved == SUCCESS ? kept : refused);
    Q_FreeICCProfile(&record);
    Q_FreeICCProfile(&source);
    EXPECT_TRUE(Clean());
  }

  Folder folder{"qv_image_faults"};
  LedgerTotals before{};
  size_t handles = 0;
  int kept = 0, refused = 0;
};

// Cut anywhere; and every pair of bytes, so every length, count, offset and type, set to what may hurt. TIFF has them
// at even places.
TEST_F(ImageFaults, SamplesCutAnywhereAndWithAnyNumberAltered) {
  for (const Sample& sample : Samples()) {
    SCOPED_TRACE(sample.what);
    for (size_t length = 0; length < sample.file.size(); ++length)
      ASSERT_NO_FATAL_FAILURE(Endure(First(sample.file, length))) << "cut at " << length;
    const size_t step = sample.file[0] == 'I' || sample.file[0] == 'M' ? 2 : 1;
    for (size_t at = 2; sample.altered && at + 2 <= sample.file.size(); at += step) {
      for (const int value : {0x0000, 0x0001, 0xFFFF}) {
        Bytes altered = sample.file;
        altered[at] = static_cast<uint8_t>(value >> 8);
        altered[at + 1] = static_cast<uint8_t>(value);
        ASSERT_NO_FATAL_FAILURE(Endure(altered)) << value << " at " << at;
      }
    }
  }
  EXPECT_TRUE(kept > 0 && refused > 0);
}

TEST_F(ImageFaults, DirectoriesThatLoopOrAreHuge) {
  Bytes loop = MakeTiff({false, false}, {PixelTags()});
  std::copy_n(loop.begin() + 4, 4, loop.end() - 4);
  std::vector<TiffTag> many = PixelTags();
  for (int tag = 1000; many.size() < 60000; ++tag) many.push_back({static_cast<uint16_t>(tag), 4, {7}});
  std::vector<TiffTag> same(65535, TiffTag{256, 3, {1}});
  std::vector<TiffTag> itself = PixelTags();
  itself.push_back({330, 13, {8, 8, 8}});
  itself.push_back(ProfileTag(RandomBytes(100000)));
  for (const Bytes& file : {loop, MakeTiff({false, false}, {many}), MakeTiff({true, true}, {same}),
                            MakeTiff({true, false}, {same}), MakeTiff({true, false}, {itself, itself})}) {
    ASSERT_NO_FATAL_FAILURE(Endure(file));
  }
  const Bytes fill(1 << 20, 0xFF);
  ASSERT_NO_FATAL_FAILURE(Endure(Joined({{0xFF, 0xD8}, fill, kScan})));
}

TEST_F(ImageFaults, EveryFileCallAndAllocationFailing) {
  const Bytes profile = RandomBytes(70000);
  const auto attempt = [&](const Sample& sample, bool saves, Fault& fault, Bytes* file) {
    const fs::path path = folder.Write("image", sample.file);
    fs::permissions(path, fs::perms::owner_all);  // to be taken over
    IccProfileRecord record = RecordOf(profile);
    const int32_t status = fault.During([&] { return saves ? Save(path, &record) : Load(path, &record); });
    const Bytes left(record.profileBytes, record.profileBytes + record.profileByteSize);
    *file = Contents(path);
    EXPECT_TRUE(saves ? left == profile : *file == sample.file);
    Q_FreeICCProfile(&record);
    EXPECT_TRUE(Clean());
    return std::pair(status, saves ? *file : left);
  };
  for (const Sample& sample : Samples()) {
    for (FaultHook* hook : {&file_faults, &allocation_faults}) {
      for (const bool saves : {false, true}) {
        SCOPED_TRACE(testing::Message() << sample.what << (saves ? " saved" : " loaded"));
        Fault none{*hook, 0};
        Bytes file;
        const auto expected = attempt(sample, saves, none, &file);
        EXPECT_GE(SweepFaults(*hook,
                              [&](Fault& fault) {
                                const auto [status, made] = attempt(sample, saves, fault, &file);
                                if (!fault.struck || (status == SUCCESS && sample.file[0] != 'G'))
                                  EXPECT_TRUE(made == expected.second && (fault.struck || status == expected.first));
                                if (status != SUCCESS && sample.file[0] != 'G') EXPECT_TRUE(file == sample.file);
                              }),
                  0);
      }
    }
  }
}

}  // namespace
