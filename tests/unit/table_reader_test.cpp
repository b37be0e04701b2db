// Emulation tables from TIFF files: as libtiff writes them, and as nobody should.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/faults.h"
#include "qvclr/tables.h"
#include "support/converters.h"
#include "unit/base_system.h"

namespace {
using namespace qv;
using namespace qv_test;
using Bytes = std::vector<uint8_t>;

constexpr auto kEndsTooEarly = static_cast<Status>(38);
constexpr uint32_t kWidth = 256, kLength = 257, kPhotometric = 262, kStrip = 273, kSamples = 277, kUnknown = 305;
constexpr uint32_t kMost = UINT32_MAX;

void Put(Bytes& bytes, size_t width, uint32_t number) {
  for (size_t i = 0; i < width; ++i) bytes.push_back(static_cast<uint8_t>(number >> 8 * i));
}

struct Entry {
  uint32_t tag, value, type = 4;
};

// Header, directory, data. The byte-order mark says big-endian on purpose: it counts for nothing.
Bytes Tiff(const std::vector<Entry>& entries, const Bytes& data = {}, uint32_t directory = 8) {
  Bytes file = {'M', 'M', 0, 42};
  Put(file, 4, directory);
  Put(file, 2, static_cast<uint32_t>(entries.size()));
  for (const Entry& entry : entries) {
    Put(file, 2, entry.tag);
    Put(file, 2, entry.type);
    Put(file, 4, 1);
    Put(file, 4, entry.value);
  }
  Put(file, 4, 0);
  file.insert(file.end(), data.begin(), data.end());
  return file;
}
constexpr uint32_t DataAfter(uint32_t entries) { return 8 + 2 + 12 * entries + 4; }

using Outcome = std::pair<Status, Bytes>;  // the table as large as it must be; empty after a failure
struct TableReader : testing::Test {
  TableReader() { std::filesystem::create_directories(folder); }
  ~TableReader() override { std::filesystem::remove_all(folder); }

  Outcome Read(size_t bytes, size_t stored) const {
    const size_t handles = OpenHandles();
    auto table = NewArray<uint8_t>(bytes);
    const Status status = ReadTable(file.string<QWChar>().c_str(), bytes, &table);
    EXPECT_EQ(OpenHandles(), handles);
    return {status, Ok(status) ? Bytes(table.get(), table.get() + std::max(bytes, stored)) : Bytes()};
  }
  Outcome Read(const Bytes& content, size_t bytes, size_t stored) const {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return Read(bytes, stored);
  }
  Status StatusOf(const Bytes& content) const { return Read(content, 16, 0).first; }

  std::filesystem::path folder = std::filesystem::temp_directory_path() / "qv_table_reader";
  std::filesystem::path file = folder / "table.tif";
};

void WriteByLibtiff(const std::filesystem::path& name, uint32_t width, uint32_t length, uint16_t samples,
                    Bytes pixels) {
  TIFF* tiff = TIFFOpen(name.string().c_str(), "wl");
  ASSERT_TRUE(tiff);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, length);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, length);
  TIFFSetField(tiff, TIFFTAG_SOFTWARE, "a tag that nothing is taken from");
  EXPECT_EQ(TIFFWriteEncodedStrip(tiff, 0, pixels.data(), static_cast<tmsize_t>(pixels.size())), pixels.size());
  TIFFClose(tiff);
}

TEST_F(TableReader, TakesWhatLibtiffWrites) {
  const struct {
    uint32_t width, length;
    uint16_t samples;
    size_t bytes;
  } kFiles[] = {{289, 289, 3, 250563}, {190, 190, 3, 107811}, {33, 1089, 3, 107811},
                {70000, 2, 1, 107811}, {10, 11, 3, 107811},   {1, 1, 1, 107811}};
  for (const auto& [width, length, samples, bytes] : kFiles) {
    Bytes pixels = RandomBytes(size_t{width} * length * samples, width);
    ASSERT_NO_FATAL_FAILURE(WriteByLibtiff(file, width, length, samples, pixels));
    const Outcome outcome = Read(bytes, pixels.size());
    pixels.resize(std::max(bytes, pixels.size()));
    EXPECT_TRUE(outcome == Outcome(kSuccess, pixels)) << width << " x " << length << " x " << samples;
  }
}

TEST_F(TableReader, TakesTheDirectoryAsItStands) {
  const Bytes data = {1, 2, 3, 4, 5, 6};
  const struct {
    const char* why;
    Bytes file, table;  // with a buffer of eight bytes
  } kFiles[] = {
      {"in any order, of any type, without the colours",
       Tiff({{kSamples, 1, 3}, {kStrip, DataAfter(4)}, {kLength, 2, 1}, {kWidth, 3, 9}}, data),
       {1, 2, 3, 4, 5, 6, 0, 0}},
      {"the last of repeated tags",
       Tiff({{kWidth, kMost}, {kLength, 2}, {kSamples, 1}, {kStrip, 9}, {kWidth, 1}, {kStrip, DataAfter(6)}}, data),
       {1, 2, 0, 0, 0, 0, 0, 0}},
      {"more than there is room for",
       Tiff({{kWidth, 9}, {kLength, 1}, {kSamples, 1}, {kStrip, DataAfter(5)}, {kPhotometric, kMost}},
            {9, 8, 7, 6, 5, 4, 3, 2, 1}),
       {9, 8, 7, 6, 5, 4, 3, 2, 1}},
      {"no width", Tiff({{kLength, 2}, {kSamples, 3}, {kStrip, kMost}}, data), Bytes(8)},
      {"no length", Tiff({{kWidth, kMost}, {kSamples, kMost}}, data), Bytes(8)},
      {"no samples", Tiff({{kWidth, 2}, {kLength, 3}, {kStrip, DataAfter(3)}}, data), Bytes(8)},
      {"no strip", Tiff({{kWidth, 4}, {kLength, 1}, {kSamples, 1}}), {'M', 'M', 0, 42, 0, 0, 0, 0}},
      {"no entries", Tiff({}), Bytes(8)},
      {"the header as the directory: one entry, its tag 0", {1, 0, 0, 0, 0, 0, 0, 0}, Bytes(8)},
  };
  for (const auto& [why, content, table] : kFiles) {
    EXPECT_EQ(Read(content, 8, table.size()), Outcome(kSuccess, table)) << why;
  }
}

TEST_F(TableReader, RefusesFilesThatEndTooEarly) {
  const auto sized = [](uint32_t width, uint32_t length, uint32_t samples, uint32_t strip) {
    return Tiff({{kWidth, width}, {kLength, length}, {kSamples, samples}, {kStrip, strip}}, Bytes(64));
  };
  const std::pair<const char*, Bytes> kFiles[] = {
      {"empty", {}},
      {"a directory at the end", {'I', 'I', 42, 0, 8, 0, 0, 0}},
      {"the byte-order mark as the directory", {'I', 'I', 42, 0, 0, 0, 0, 0}},
      {"its own offset as the directory", {'I', 'I', 42, 0, 4, 0, 0, 0}},
      {"a directory far beyond the end", Tiff({}, {}, kMost)},
      {"a short of 32 bits", Tiff({{kWidth, 65537, 3}, {kLength, 1}, {kSamples, 1}})},
      {"large", sized(65535, 65535, 3, 8)},
      {"a size of 2^64", sized(1u << 31, 1u << 31, 4, 8)},
      {"the largest size", sized(kMost, kMost, kMost, 8)},
      {"larger than its file by a byte", sized(1, DataAfter(4) + 64 + 1, 1, 0)},
      {"a strip that ends a byte behind the end", sized(65, 1, 1, DataAfter(4))},
      {"a strip beyond the end", sized(1, 1, 1, kMost)},
  };
  for (const auto& [why, content] : kFiles) EXPECT_EQ(StatusOf(content), kEndsTooEarly) << why;

  Bytes cut = Tiff({{kWidth, 5}, {kUnknown, 0}, {kLength, 2}, {kSamples, 2}, {kStrip, DataAfter(5)}}, Bytes(20));
  EXPECT_EQ(StatusOf(cut), kSuccess);
  while (!cut.empty()) {
    cut.pop_back();
    EXPECT_EQ(StatusOf(cut), kEndsTooEarly) << cut.size();
  }
  // Of an unknown tag no more than its number is read.
  Bytes open_end = Tiff({{kWidth, 8}, {kLength, 1}, {kSamples, 1}, {kUnknown, 0}});
  open_end.resize(open_end.size() - 4 - 10);
  EXPECT_EQ(StatusOf(open_end), kSuccess);
  open_end.pop_back();
  EXPECT_EQ(StatusOf(open_end), kEndsTooEarly);
}

TEST_F(TableReader, GoesThroughTheLargestDirectory) {
  std::vector<Entry> entries(65535, {kWidth, kMost});
  entries[65532] = {kWidth, 2};
  entries[65533] = {kLength, 1};
  entries[65534] = {kSamples, 1};
  EXPECT_EQ(Read(Tiff(entries), 3, 0), Outcome(kSuccess, {'M', 'M', 0}));
}

TEST_F(TableReader, TellsEveryFailureOfFilesAndMemory) {
  const size_t blocks = Ledger().blocks;
  const Bytes content = Tiff({{kWidth, 5}, {kLength, 1}, {kSamples, 2}, {kStrip, DataAfter(4)}}, Bytes(10, 7));
  ASSERT_EQ(Read(content, 9, 10), Outcome(kSuccess, Bytes(10, 7)));
  int failures = 0;
  for (int n = 1; n < 100; ++n) {
    file_faults.FailNth(n);
    const Status status = Read(9, 10).first;
    const bool struck = !file_faults.Armed();
    file_faults.FailNth(0);
    if (!struck) break;
    failures += !Ok(status);
    if (!Ok(status)) EXPECT_GT(static_cast<int32_t>(status), 1) << n;
  }
  // Open, two numbers, four entries, the size, the strip; the closing is not told.
  EXPECT_EQ(failures, 1 + 2 * 2 + 4 * 3 + 1 + 2);

  allocation_faults.FailNth(2);  // behind the caller's own
  EXPECT_EQ(Read(9, 10).first, kNoMemory);
  allocation_faults.FailNth(0);
  EXPECT_EQ(Ledger().blocks, blocks);

  std::filesystem::remove(file);
  EXPECT_EQ(static_cast<int32_t>(Read(9, 10).first), 2) << "no such file, by the numbers of both systems";
}

}  // namespace
