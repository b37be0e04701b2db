// Profiles into JPEG, TIFF and GIF files and out of them again: the bytes of the profile, the pixels as the formats'
// own libraries decode them, and all else in the files.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdio>  // for jpeglib.h
#include <cstdlib>
#include <filesystem>
#include <functional>
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
constexpr uint32_t kWidth = 70, kHeight = 40;

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

Bytes Picture() {
  Bytes pixels(3 * kWidth * kHeight);
  const Bytes noise = RandomBytes(pixels.size(), 5);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i % 201 + noise[i] % 32);
  return pixels;
}

Bytes Compressed(bool progressive) {
  jpeg_error_mgr errors;
  jpeg_compress_struct jpeg{};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  jpeg_mem_dest(&jpeg, &bytes, &count);
  jpeg.image_width = kWidth, jpeg.image_height = kHeight;
  jpeg.input_components = 3, jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  if (progressive) jpeg_simple_progression(&jpeg);
  jpeg.restart_interval = 3;
  jpeg_start_compress(&jpeg, TRUE);
  Bytes pixels = Picture();
  for (uint8_t* row = pixels.data(); jpeg.next_scanline < kHeight; row += size_t{3} * kWidth)
    jpeg_write_scanlines(&jpeg, &row, 1);
  jpeg_finish_compress(&jpeg);
  const Bytes file(bytes, bytes + count);
  jpeg_destroy_compress(&jpeg);
  std::free(bytes);
  return file;
}

// Pixels, and the profile as that library finds it.
std::pair<Bytes, Bytes> Decompressed(const Bytes& file) {
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
  jpeg_start_decompress(&jpeg);
  Bytes pixels(3 * kWidth * kHeight);
  for (uint8_t* row = pixels.data(); jpeg.output_scanline < kHeight; row += size_t{3} * kWidth)
    jpeg_read_scanlines(&jpeg, &row, 1);
  jpeg_finish_decompress(&jpeg);
  jpeg_destroy_decompress(&jpeg);
  return {pixels, profile};
}

const Bytes kExif = Segment(0xE1, Joined({Text({"Exif\0\0", 6}), RandomBytes(300, 2)}));
const Bytes kFill = {0xFF, 0xFF, 0xFF};

// A file's parts and where the profile belongs among them.
struct JpegCase {
  const char* what;
  JpegParts before, after;
};

TEST_F(ImageCarriers, JpegKeepsEveryOtherByte) {
  const JpegParts baseline = PartsOf(Compressed(false)), progressive = PartsOf(Compressed(true));
  const auto tail = [](const JpegParts& parts) { return JpegParts(parts.begin() + 1, parts.end()); };
  const auto with = [](JpegParts parts, const JpegParts& more, size_t at) {
    parts.insert(parts.begin() + static_cast<ptrdiff_t>(at), more.begin(), more.end());
    return parts;
  };
  const Bytes comment = Segment(0xFE, Text("a comment")), other_app2 = Segment(0xE2, Text({"ICC_PROFIL\0\0\0\0", 14}));
  const Bytes short_app2 = Segment(0xE2, Text({"ICC_PROFILE\0", 12})), late_app1 = Segment(0xE1, Text("late"));
  const JpegParts old = {IccSegment(3, 3, Text("third")), IccSegment(1, 3, Text("first")), comment,
                         IccSegment(9, 9, {}), kExif};
  const JpegCase cases[] = {
      {"baseline", {baseline[0]}, tail(baseline)},
      {"progressive", {progressive[0]}, tail(progressive)},
      {"no APP0", {}, tail(baseline)},
      {"EXIF, comments", {baseline[0], kExif, Joined({kFill, kExif})}, with(tail(baseline), {comment, late_app1}, 0)},
      {"APP2 of others", {baseline[0]}, with(tail(baseline), {other_app2, short_app2, Segment(0xE2, {}), kExif}, 0)},
      {"EXIF without APP0", {kExif}, tail(baseline)},
      {"fill bytes", {baseline[0]}, with(tail(baseline), {Joined({kFill, comment}), Joined({{0xFF}, kExif})}, 1)},
      {"a marker alone", {baseline[0]}, with(tail(baseline), {Joined({{0xFF, 0x01}, comment})}, 0)}};
  const auto join = [](const JpegParts& before, const Bytes& middle, const JpegParts& after) {
    JpegParts parts = before;
    parts.push_back(middle);
    parts.insert(parts.end(), after.begin(), after.end());
    return JpegOf(parts);
  };
  for (const JpegCase& c : cases) {
    SCOPED_TRACE(c.what);
    const Bytes without = join(c.before, {}, c.after);
    const Bytes pixels = Decompressed(without).first;
    const fs::path path = folder.Write("image.jpg", without);
    for (const size_t bytes : std::span(kSizes).first(&c == cases ? std::size(kSizes) : 2)) {
      const Bytes profile = RandomBytes(bytes, bytes);
      const Bytes made = Saved(path, profile);
      ASSERT_TRUE(made == join(c.before, IccSegments(profile), c.after)) << bytes;
      const auto [pixels_after, found] = Decompressed(made);
      EXPECT_TRUE(pixels_after == pixels && found == profile) << bytes;
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

using TiffPtr = std::unique_ptr<TIFF, decltype(&TIFFClose)>;
TiffPtr OpenTiff(const fs::path& path, const char* mode) { return {TIFFOpen(path.string().c_str(), mode), TIFFClose}; }

void WriteTiff(const fs::path& path, const char* mode, int compression, bool tiled) {
  const TiffPtr tiff = OpenTiff(path, mode);
  ASSERT_TRUE(tiff);
  for (int page = 0; page < 3; ++page) {
    TIFF* t = tiff.get();
    TIFFSetField(t, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(t, TIFFTAG_IMAGELENGTH, kHeight);
    TIFFSetField(t, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(t, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(t, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(t, TIFFTAG_PHOTOMETRIC, compression == COMPRESSION_JPEG ? PHOTOMETRIC_YCBCR : PHOTOMETRIC_RGB);
    TIFFSetField(t, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    if (compression == COMPRESSION_LZW) TIFFSetField(t, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (compression == COMPRESSION_JPEG) TIFFSetField(t, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    TIFFSetField(t, TIFFTAG_XRESOLUTION, 1 / 3.0);
    TIFFSetField(t, TIFFTAG_IMAGEDESCRIPTION, "made by a test");
    Bytes pixels = Picture();
    if (tiled) {
      for (const uint32_t tag : {TIFFTAG_TILEWIDTH, TIFFTAG_TILELENGTH}) TIFFSetField(t, tag, 32);
      pixels.resize(3 * 32 * 32);
      for (uint32_t i = 0; i < TIFFNumberOfTiles(t); ++i)
        TIFFWriteEncodedTile(t, i, pixels.data(), static_cast<tmsize_t>(pixels.size()));
    } else {
      TIFFSetField(t, TIFFTAG_ROWSPERSTRIP, 16);
      for (uint32_t row = 0; row < kHeight; ++row) TIFFWriteScanline(t, &pixels[size_t{3} * kWidth * row], row, 0);
    }
    ASSERT_TRUE(TIFFWriteDirectory(t));
  }
}

// The decoded pages, and the profile of each as that library finds it.
std::pair<Bytes, std::vector<Bytes>> DecodedTiff(const fs::path& path) {
  const TiffPtr tiff = OpenTiff(path, "r");
  std::pair<Bytes, std::vector<Bytes>> decoded;
  if (!tiff) return decoded;
  do {
    std::vector<uint32_t> page(size_t{kWidth} * kHeight);
    EXPECT_TRUE(TIFFReadRGBAImage(tiff.get(), kWidth, kHeight, page.data(), 1));
    const auto* bytes = reinterpret_cast<const uint8_t*>(page.data());
    decoded.first.insert(decoded.first.end(), bytes, bytes + 4 * page.size());
    uint32_t count = 0;
    const uint8_t* icc = nullptr;
    TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &count, &icc);
    decoded.second.emplace_back(icc, icc + count);
  } while (TIFFReadDirectory(tiff.get()));
  return decoded;
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

TEST_F(ImageCarriers, TiffKeepsPixelsAndTags) {
  TIFFSetWarningHandler(nullptr);
  for (const char* mode : {"wl", "wb", "wl8", "wb8"}) {
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_JPEG}) {
      if (!TIFFIsCODECConfigured(static_cast<uint16_t>(compression))) continue;  // JPEG on Windows
      for (const bool tiled : {false, true}) {
        SCOPED_TRACE(testing::Message() << mode << " compression " << compression << (tiled ? " tiles" : " strips"));
        const fs::path path = folder.In("image.tif");
        ASSERT_NO_FATAL_FAILURE(WriteTiff(path, mode, compression, tiled));
        const Bytes before = Contents(path), pixels = DecodedTiff(path).first;
        ASSERT_EQ(pixels.size(), 3u * 4 * kWidth * kHeight);
        for (const size_t bytes : {size_t{4}, size_t{5}, tiled ? kChunk : 725436, size_t{0}}) {
          const Bytes profile = RandomBytes(bytes, bytes);
          ExpectOnlyTheProfile(before, Saved(path, profile), profile);
          const auto [pixels_after, found] = DecodedTiff(path);
          EXPECT_TRUE(pixels_after == pixels && found == (std::vector<Bytes>{profile, {}, {}})) << bytes;
        }
      }
    }
  }
}

// Values of every type, in tags that are known and in tags that are not.
TEST_F(ImageCarriers, TiffKeepsTagsOfEveryType) {
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
    for (const Bytes& profile : {RandomBytes(3), RandomBytes(70000), Bytes{}}) {
      ExpectOnlyTheProfile(before, Saved(path, profile), profile);
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

}  // namespace
