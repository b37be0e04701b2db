// TIFF files of emulation tables as nobody should write them.
#include <gtest/gtest.h>

#include <algorithm>

#include "qvclr/tables.h"
#include "support/files.h"
#include "unit/fault_sweep.h"

namespace {
using namespace qv;
using namespace qv_test;

constexpr auto kEndsTooEarly = static_cast<Status>(38);
constexpr uint32_t kWidth = 256, kLength = 257, kPhotometric = 262, kStrip = 273, kSamples = 277, kUnknown = 305;
constexpr uint32_t kMost = UINT32_MAX;

struct Entry {
  uint32_t tag, value, type = 4;
};

// Header, directory, data. The byte-order mark says big-endian on purpose: it counts for nothing.
Bytes Tiff(const std::vector<Entry>& entries, const Bytes& data = {}, uint32_t directory = 8) {
  Bytes file = {'M', 'M', 0, 42};
  const auto put = [&](size_t width, uint32_t number) {
    for (size_t i = 0; i < width; ++i) file.push_back(static_cast<uint8_t>(number >> 8 * i));
  };
  put(4, directory);
  put(2, static_cast<uint32_t>(entries.size()));
  for (const Entry& entry : entries) put(2, entry.tag), put(2, entry.type), put(4, 1), put(4, entry.value);
  put(4, 0);
  return Joined({file, data});
}
constexpr uint32_t DataAfter(uint32_t entries) { return 8 + 2 + 12 * entries + 4; }

using Outcome = std::pair<Status, Bytes>;  // the table as large as it must be; empty after a failure
struct TableReader : testing::Test {
  Outcome Read(size_t bytes, size_t stored) const {
    auto table = NewArray<uint8_t>(bytes);
    const Status status = ReadTable(file.string<QWChar>().c_str(), bytes, &table);
    return {status, Ok(status) ? Bytes(table.get(), table.get() + std::max(bytes, stored)) : Bytes()};
  }
  Outcome Read(const Bytes& content, size_t bytes, size_t stored) const {
    folder.Write("table.tif", content);
    return Read(bytes, stored);
  }

  const Folder folder{"qv_table_reader"};
  const std::filesystem::path file = folder.In("table.tif");
};

TEST_F(TableReader, TakesTheDirectoryAsItStands) {
  const Bytes data = {1, 2, 3, 4, 5, 6};
  std::vector<Entry> largest(65535, {kWidth, kMost});
  largest[65532] = {kWidth, 8}, largest[65533] = {kLength, 1}, largest[65534] = {kSamples, 1};
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
      {"the largest directory", Tiff(largest), {'M', 'M', 0, 42, 8, 0, 0, 0}},
  };
  for (const auto& [why, content, table] : kFiles) {
    EXPECT_EQ(Read(content, 8, table.size()), Outcome(kSuccess, table)) << why;
  }
}

TEST_F(TableReader, RefusesFilesThatEndTooEarly) {
  const auto sized = [](uint32_t width, uint32_t length, uint32_t samples, uint32_t strip) {
    return Tiff({{kWidth, width}, {kLength, length}, {kSamples, samples}, {kStrip, strip}}, Bytes(64));
  };
  const auto status = [&](const Bytes& content) { return Read(content, 16, 0).first; };
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
  for (const auto& [why, content] : kFiles) EXPECT_EQ(status(content), kEndsTooEarly) << why;

  // Of an unknown tag no more than its number is read.
  const Bytes unknown_last = Tiff({{kWidth, 8}, {kLength, 1}, {kSamples, 1}, {kUnknown, 0}});
  for (Bytes cut : {Tiff({{kWidth, 5}, {kUnknown, 0}, {kLength, 2}, {kSamples, 2}, {kStrip, DataAfter(5)}}, Bytes(20)),
                    First(unknown_last, unknown_last.size() - 4 - 10)}) {
    EXPECT_EQ(status(cut), kSuccess);
    while (!cut.empty()) {
      cut.pop_back();
      EXPECT_EQ(status(cut), kEndsTooEarly) << cut.size();
    }
  }
}

TEST_F(TableReader, TellsEveryFailureOfFiles) {
  const Bytes content = Tiff({{kWidth, 5}, {kLength, 1}, {kSamples, 2}, {kStrip, DataAfter(4)}}, Bytes(10, 7));
  ASSERT_EQ(Read(content, 9, 10), Outcome(kSuccess, Bytes(10, 7)));
  // Open, two numbers, four entries, the size, the strip; the closing is not told.
  constexpr int kTold = 1 + 2 * 2 + 4 * 3 + 1 + 2;
  const auto attempt = [&](Fault& fault) {
    const int32_t status = fault.During([&] { return static_cast<int32_t>(Read(9, 10).first); });
    EXPECT_EQ(status > 1, fault.struck && fault.n <= kTold) << status;
  };
  EXPECT_EQ(SweepFaults(file_faults, attempt), kTold + 1);
}

}  // namespace
