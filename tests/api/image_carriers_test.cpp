// Profiles into JPEG, TIFF and GIF files and out of them again: the bytes of the profile, as the formats' own
// libraries find it too, all else in the files, and what is told of others.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdio>  // for jpeglib.h
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include <jpeglib.h>

#include "Qvclr15x.h"
#include "support/converters.h"
#include "support/files.h"
#include "support/image_files.h"

namespace {

using namespace qv_test;
namespace fs = std::filesystem;

constexpr size_t kChunk = 65519;
constexpr size_t kSizes[] = {131038, 1, kChunk - 1, kChunk, kChunk + 1, 65525, 65533, 131039, 725436};

struct ImageCarriers : testing::Test {
  ImageCarriers() { Q_InitICCProfile(&record, sizeof record); }
  ~ImageCarriers() override { Q_FreeICCProfile(&record); }

  int32_t Load(const fs::path& path) { return Q_LoadICCProfile(path.string<QWChar>().c_str(), &record, nullptr); }
  int32_t Save(const fs::path& path) { return Q_SaveICCProfile(path.string<QWChar>().c_str(), &record, nullptr); }
  Bytes Profile() const { return {record.profileBytes, record.profileBytes + record.profileByteSize}; }
  // The record gets any bytes at all from a file made by hand.
  void Hold(const Bytes& profile) {
    record.profileByteSize = 0;
    if (profile.empty()) return;
    ASSERT_EQ(Load(folder.Write("source.tif", TiffWith(profile))), SUCCESS);
    ASSERT_EQ(Profile(), profile);
  }
  size_t FilesInFolder() const { return static_cast<size_t>(std::distance(fs::directory_iterator(folder.In("")), {})); }
  // The file after saving; loading it must give the profile, of which none is left after one of no bytes.
  Bytes Saved(const fs::path& path, const Bytes& profile) {
    Hold(profile);
    const size_t files = FilesInFolder();
    EXPECT_EQ(Save(path), SUCCESS);
    EXPECT_EQ(FilesInFolder(), files);
    EXPECT_EQ(Load(path), profile.empty() ? ERR_ICC_PROFILE_NOT_FOUND : SUCCESS);
    EXPECT_TRUE(Profile() == profile);
    return Contents(path);
  }

  Folder folder{"qv_image_carriers"};
  IccProfileRecord record;
};

// A picture of one grey pixel, as far as readers of its header look.
const JpegParts kPicture = {Segment(0xE0, Text("JFIF")), Segment(0xC0, {8, 0, 1, 0, 1, 1, 1, 0x11, 0}),
                            Joined({Segment(0xDA, {1, 1, 0, 0, 63, 0}), {0x12, 0xFF, 0, 0x34, 0xFF, 0xD9}})};

// The profile as libjpeg finds it.
Bytes FoundByLibjpeg(const Bytes& file) {
  jpeg_error_mgr errors;
  jpeg_decompress_struct jpeg{};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_save_markers(&jpeg, JPEG_APP0 + 2, 0xFFFF);
  jpeg_mem_src(&jpeg, file.data(), static_cast<unsigned long>(file.size()));
  jpeg_read_header(&jpeg, TRUE);
  JOCTET* icc = nullptr;
  unsigned count = 0;
  jpeg_read_icc_profile(&jpeg, &icc, &count);
  const Bytes profile(icc, icc + count);
  std::free(icc);
  jpeg_destroy_decompress(&jpeg);
  return profile;
}

const Bytes kExif = Segment(0xE1, Joined({Text({"Exif\0\0", 6}), RandomBytes(300, 2)}));
const Bytes kFill = {0xFF, 0xFF, 0xFF};

// A file's parts and where the profile belongs among them.
struct JpegCase {
  const char* what;
  JpegParts before, after;
};

TEST_F(ImageCarriers, JpegKeepsEveryOtherByte) {
  const JpegParts tail(kPicture.begin() + 1, kPicture.end());
  const auto with = [](JpegParts parts, const JpegParts& more, size_t at) {
    parts.insert(parts.begin() + static_cast<ptrdiff_t>(at), more.begin(), more.end());
    return parts;
  };
  const Bytes comment = Segment(0xFE, Text("a comment")), other_app2 = Segment(0xE2, Text({"ICC_PROFIL\0\0\0\0", 14}));
  const Bytes short_app2 = Segment(0xE2, Text({"ICC_PROFILE\0", 12})), late_app1 = Segment(0xE1, Text("late"));
  const JpegParts old = {IccSegment(3, 3, Text("third")), IccSegment(1, 3, Text("first")), comment,
                         IccSegment(9, 9, {}), kExif};
  const JpegCase cases[] = {
      {"plain", {kPicture[0]}, tail},
      {"no APP0", {}, tail},
      {"EXIF, comments", {kPicture[0], kExif, Joined({kFill, kExif})}, with(tail, {comment, late_app1}, 0)},
      {"APP2 of others", {kPicture[0]}, with(tail, {other_app2, short_app2, Segment(0xE2, {}), kExif}, 0)},
      {"EXIF without APP0", {kExif}, tail},
      {"fill bytes", {kPicture[0]}, with(tail, {Joined({kFill, comment}), Joined({{0xFF}, kExif})}, 1)},
      {"a marker alone", {kPicture[0]}, with(tail, {Joined({{0xFF, 0x01}, comment})}, 0)}};
  const auto join = [](const JpegParts& before, const Bytes& middle, const JpegParts& after) {
    JpegParts parts = before;
    parts.push_back(middle);
    parts.insert(parts.end(), after.begin(), after.end());
    return JpegOf(parts);
  };
  for (const JpegCase& c : cases) {
    SCOPED_TRACE(c.what);
    const Bytes without = join(c.before, {}, c.after);
    const fs::path path = folder.Write("image.jpg", without);
    for (const size_t bytes : std::span(kSizes).first(&c == cases ? std::size(kSizes) : 2)) {
      const Bytes profile = RandomBytes(bytes, bytes);
      const Bytes made = Saved(path, profile);
      ASSERT_TRUE(made == join(c.before, IccSegments(profile), c.after)) << bytes;
      EXPECT_TRUE(FoundByLibjpeg(made) == profile) << bytes;
    }
    EXPECT_EQ(Saved(path, {}), without);
    // Old segments in any order and with anything between them; the new ones stand where the first of them stood.
    const JpegParts rest = with(c.after, old, 0), kept = with(c.after, {comment, kExif}, 0);
    folder.Write("image.jpg", join(c.before, {}, rest));
    ASSERT_EQ(Load(path), SUCCESS);
    EXPECT_EQ(Profile(), Text("thirdfirst"));
    const Bytes profile = RandomBytes(70000);
    EXPECT_EQ(Saved(path, profile), join(c.before, IccSegments(profile), kept));
    folder.Write("image.jpg", join(c.before, {}, rest));
    EXPECT_EQ(Saved(path, {}), join(c.before, {}, kept));
  }
  const Bytes alone = {0xFF, 0x01};  // before a segment that goes
  const fs::path path = folder.Write("image.jpg", JpegOf({Joined({alone, old[0]}), Joined({kFill, old[1]}), kScan}));
  EXPECT_EQ(Saved(path, {1}), JpegOf({alone, IccSegments({1}), kScan}));
}

TEST_F(ImageCarriers, JpegTakes255Segments) {
  const Bytes image = JpegOf({Segment(0xE0, {}), kScan}), most = RandomBytes(255 * kChunk);
  const fs::path path = folder.Write("image.jpg", image);
  Bytes more = most;
  more.push_back(1);
  Hold(more);
  EXPECT_EQ(Save(path), ERR_FAILURE);
  EXPECT_EQ(Contents(path), image);
  EXPECT_TRUE(Saved(path, most) == JpegOf({Segment(0xE0, {}), IccSegments(most), kScan}));
}

// Nothing of the old file moved, its header aside, and of its tags only the profile changed.
void ExpectOnlyTheProfile(const Bytes& before, const Bytes& after, const Bytes& profile) {
  ASSERT_GE(after.size(), before.size());
  EXPECT_TRUE(std::equal(before.begin() + kTiffPixels, before.end(), after.begin() + kTiffPixels));
  std::vector<TiffDirectory> expected = DirectoriesOf(before), found = DirectoriesOf(after);
  expected.at(0).erase(kIccTag);
  if (!profile.empty()) expected[0][kIccTag] = ProfileTag(profile);
  ASSERT_EQ(found.size(), expected.size());
  for (size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].size(), expected[i].size()) << "directory " << i;
    for (const auto& [tag, content] : expected[i]) EXPECT_TRUE(found[i][tag] == content) << "tag " << tag;
  }
}

// The profile of each page, as libtiff finds it.
std::vector<Bytes> FoundByLibtiff(const fs::path& path) {
  std::vector<Bytes> profiles;
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(path.string().c_str(), "r"), TIFFClose);
  if (!tiff) return profiles;
  do {
    uint32_t count = 0;
    const uint8_t* icc = nullptr;
    TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &count, &icc);
    profiles.emplace_back(icc, icc + count);
  } while (TIFFReadDirectory(tiff.get()));
  return profiles;
}

// Values of every type, in tags that are known and in tags that are not.
TEST_F(ImageCarriers, TiffKeepsTagsOfEveryType) {
  TIFFSetWarningHandler(nullptr);
  for (const auto& [motorola, big] : {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
    std::vector<TiffTag> first = PixelTags(), second = PixelTags();
    for (uint16_t type = 1; type < (big ? 19 : 14); ++type) {
      if (kTiffBytes[type] == 0) continue;
      for (const size_t count : {1, 5}) {  // in the directory, mostly, and outside of it
        const Bytes random = RandomBytes(count * TiffParts(type), type);
        TiffTag& tag = first.emplace_back(TiffTag{static_cast<uint16_t>(50000 + 10 * type + count), type, {}});
        const uint64_t mask = UINT64_MAX >> (64 - 8 * kTiffBytes[type]);
        for (const uint8_t byte : random) tag.values.push_back(byte * uint64_t{0x0123456789ABCDEF} & mask);
      }
    }
    for (const TiffTag& tag : {TiffTag{282, 5, {7200, 100}}, TiffTag{283, 5, {1, 3}}, TiffTag{330, 13, {8}},
                               TiffTag{305, 2, {'a', 0, 'b', 0}}, TiffTag{33432, 2, {'n'}}, TiffTag{34665, 4, {8}}}) {
      first.push_back(tag);
    }
    std::ranges::sort(first, {}, &TiffTag::tag);
    SCOPED_TRACE(testing::Message() << (motorola ? "MM" : "II") << big);
    const Bytes before = MakeTiff({motorola, big}, {first, second});
    const fs::path path = folder.Write("image.tif", before);
    for (const size_t bytes : {3, 4, 5, 8, 9, 725436, 0}) {
      const Bytes profile = RandomBytes(bytes);
      ExpectOnlyTheProfile(before, Saved(path, profile), profile);
      EXPECT_TRUE(FoundByLibtiff(path) == (std::vector<Bytes>{profile, {}})) << bytes;
    }
  }
}

TEST_F(ImageCarriers, GifGetsAnExtensionBeforeItsTrailer) {
  Bytes expected = Joined({Text("GIF89a"),
                           {2, 0, 2, 0, 0x80, 0, 0, 0, 0, 0, 255, 255, 255},
                           {0x2C, 0, 0, 0, 0, 2, 0, 2, 0, 0, 2, 3, 0x44, 0x52, 5, 0, 0x3B}});
  const fs::path path = folder.Write("image.gif", expected);
  EXPECT_EQ(Save(path), ERR_INV_PARAMETER);
  for (const size_t bytes : {1, 254, 255, 256, 510, 65533}) {
    const Bytes profile = RandomBytes(bytes);
    Hold(profile);
    EXPECT_EQ(Save(path), SUCCESS);
    expected.pop_back();
    expected = Joined({expected, {0x21, 0xFF, 0x0B}, Text("ICCRGBG1"), {0, 1, 2}});
    for (size_t i = 0; i < bytes; ++i) {
      if (i % 255 == 0) expected.push_back(static_cast<uint8_t>(std::min<size_t>(bytes - i, 255)));
      expected.push_back(profile[i]);
    }
    expected = Joined({expected, {0, 0x3B}});
    EXPECT_EQ(Contents(path), expected) << bytes;
  }
  EXPECT_EQ(Load(path), ERR_ICC_FORMAT_NOT_SUPPORTED);
  EXPECT_EQ(size_t{record.profileByteSize}, 0u);
}

// What is told of files: by loading, by saving, and by saving no bytes. Afterwards the record holds what was read
// before the failure, or else what it held.
TEST_F(ImageCarriers, TellWhatIsWrong) {
  const Bytes profile = RandomBytes(100);
  const fs::path sound = folder.Write("sound.tif", TiffWith(profile));
  constexpr int32_t kNotFound = ERR_ICC_PROFILE_NOT_FOUND, kNoFormat = ERR_ICC_FORMAT_NOT_SUPPORTED;
  constexpr int32_t kDamaged = ERR_ICC_PROFILE_DATA, kNoFile = ERR_FILE_ACCESS;
  const struct {
    const char* name;
    Bytes content;
    int32_t loaded;
    Bytes held;
    int32_t saved, saved_none;
  } kCases[] = {
      {"with.tif", TiffWith(profile), SUCCESS, profile, SUCCESS, SUCCESS},
      {"without.tif", MakeTiff({true, false}, {PixelTags()}), kNotFound, profile, SUCCESS, SUCCESS},
      {"none.jpg", JpegOf({kScan}), kNotFound, profile, SUCCESS, SUCCESS},
      {"behind.jpg", JpegOf({kScan, IccSegment(1, 1, {5})}), kNotFound, profile, SUCCESS, SUCCESS},
      {"tables.jpg", JpegOf({IccSegment(1, 1, {6}), {0xFF, 0xD9}}), SUCCESS, {6}, SUCCESS, SUCCESS},
      {"empty.jpg", JpegOf({IccSegment(1, 1, {}), IccSegment(7, 0, {5}), kScan}), SUCCESS, {5}, SUCCESS, SUCCESS},
      {"damaged.jpg",
       JpegOf({Segment(0xE1, {}), IccSegment(1, 1, {1, 2}), {0xFF, 0xE2, 0, 9, 1}}),
       kDamaged,
       {1, 2},
       kDamaged,
       kDamaged},
      {"thirteen.jpg",
       JpegOf({IccSegment(1, 1, {3, 4}), Segment(0xE2, Text({"ICC_PROFILE\0\1", 13})), kScan}),
       ERR_FAILURE,
       {3, 4},
       SUCCESS,
       SUCCESS},
      {"none.ps", Text("%!PS"), kNotFound, profile, kNoFormat, kNoFormat},
      {"binary.ps", Text("\xC5\xD0\xD3\xC6 %%BeginICCProfile:"), ERR_ICC_PROFILE_NO_DATA, {}, kNoFormat, kNoFormat},
      {"image.gif", Text("GIF87a;"), kNoFormat, {}, SUCCESS, ERR_INV_PARAMETER},
      {"empty", {}, kNoFormat, {}, kNoFormat, kNoFormat},
      {"no/folder", {}, kNoFile, {}, kNoFile, kNoFile},
      {"", {}, kNoFile, {}, kNoFile, kNoFile}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const fs::path path = folder.In(c.name);
    const std::string narrow = path.string();
    if (*c.name != 0) folder.Write(c.name, c.content);
    for (const bool by_narrow : {false, true}) {
      ASSERT_EQ(Load(sound), SUCCESS);
      EXPECT_EQ(by_narrow ? Q_LoadICCProfileA(narrow.c_str(), &record, nullptr) : Load(path), c.loaded);
      EXPECT_EQ(Profile(), c.held);
    }
    ASSERT_EQ(Load(sound), SUCCESS);
    for (const uint64_t bytes : {profile.size() + 1, size_t{UINT32_MAX} + 2, SIZE_MAX}) {
      record.profileByteSize = bytes;
      EXPECT_EQ(Save(path), ERR_ICC_INVALID_PROFILE);
    }
    record.profileByteSize = profile.size();
    EXPECT_EQ(Save(path), c.saved);
    EXPECT_EQ(Q_SaveICCProfileA(narrow.c_str(), &record, nullptr), c.saved);
    EXPECT_EQ(Profile(), profile);
    record.profileByteSize = 0;
    EXPECT_EQ(Save(path), c.saved_none);
    record.profileByteSize = profile.size();
  }
}

TEST_F(ImageCarriers, RefusedArgumentsChangeNothing) {
  const Bytes profile = RandomBytes(100), file = TiffWith(profile);
  const fs::path path = folder.Write("with.tif", file), foreign = folder.In("") / u"\U0001F308 色彩.tif";
  ASSERT_EQ(Load(path), SUCCESS);
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
  EXPECT_EQ(Profile(), profile);
  EXPECT_EQ(Contents(path), file);
  fs::rename(path, foreign);
  EXPECT_TRUE(Save(foreign) == SUCCESS && Load(foreign) == SUCCESS && Profile() == profile);
}

}  // namespace
