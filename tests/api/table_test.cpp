// Methods 8 and 16: the built-in emulation tables, and tables from files.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/converters.h"
#include "support/files.h"
#include "support/system.h"

namespace {

using namespace qv_test;

struct Table {
  const char* file;
  uint32_t src, dst;
  size_t channels;
  int step;

  size_t Pixels(const Bytes& source) const { return source.size() / channels; }
};

const Table kTables[] = {{"cmyk_rgb.et", CS_CMYK, CS_RGB, 4, 16},
                         {"rgb_lab.et", CS_RGB, CS_LAB, 3, 8},
                         {"lab_rgb.et", CS_LAB, CS_RGB, 3, 8}};

Bytes By(const ConversionParams& params, const Table& table, const Bytes& source) {
  const size_t pixels = table.Pixels(source);
  return Converted(MakeConverter(table.src, table.dst, params), source, pixels, 3 * pixels);
}
Bytes ByTable(const Table& table, const Bytes& source) { return By(Params(METHOD_TABLE), table, source); }

Bytes LabFlipped(Bytes lab) {
  for (size_t i = 0; i < lab.size(); i += 3) lab[i + 1] ^= 0x80, lab[i + 2] ^= 0x80;
  return lab;
}

// Every node as a pixel, in the order of the entries; the last one of a channel as 255.
Bytes NodePixels(const Table& table) {
  const auto nodes = static_cast<size_t>(256 / table.step + 1);
  size_t count = 1;
  for (size_t i = 0; i < table.channels; ++i) count *= nodes;
  Bytes pixels(count * table.channels);
  for (size_t i = 0; i < count; ++i) {
    for (size_t c = table.channels, rest = i; c-- > 0; rest /= nodes)
      pixels[i * table.channels + c] = static_cast<uint8_t>(std::min(rest % nodes * table.step, size_t{255}));
  }
  return table.src == CS_LAB ? LabFlipped(pixels) : pixels;
}

TEST(Tables, GiveTheirEntriesAtTheirNodes) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes entries = ReadResource(table.file), nodes = NodePixels(table), made = ByTable(table, nodes);
    for (size_t i = 0; i < table.Pixels(nodes); ++i) {
      const uint8_t* pixel = &nodes[i * table.channels];
      const bool wraps = std::any_of(pixel, pixel + table.channels, [&](uint8_t byte) { return byte % table.step; });
      ASSERT_TRUE(wraps || std::equal(&made[3 * i], &made[3 * i] + 3, &entries[3 * i])) << i;
    }
  }
}

TEST(Tables, ServeBothOrdersOfRgbAndLeaveInkToTheFormula) {
  const auto bgr = [](uint32_t space) { return space == CS_RGB ? uint32_t{CS_BGR} : space; };
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes source = RandomBytes(1000 * table.channels), expected = ByTable(table, source);
    const Bytes made = ByTable({table.file, bgr(table.src), bgr(table.dst), table.channels, table.step},
                               table.src == CS_RGB ? EndsSwapped(source) : source);
    EXPECT_EQ(table.dst == CS_RGB ? EndsSwapped(made) : made, expected);
  }
  const Bytes source = RandomBytes(3 * 1000), untouched(3 * 1000, 0xEE);
  const CmykParams black = {sizeof black, 730, 0};
  for (const uint32_t rgb : {CS_RGB, CS_BGR}) {
    const auto ink = [&](uint32_t method, const CmykParams* cmyk) {
      ConversionParams params = Params(method);
      params.pCmykParams = cmyk;
      return Converted(MakeConverter(rgb, CS_CMYK, params), source, 1000, 4000);
    };
    for (const CmykParams* cmyk : {&black, static_cast<const CmykParams*>(nullptr)})
      EXPECT_EQ(ink(METHOD_TABLE, cmyk), ink(METHOD_FORMULA, cmyk));
    EXPECT_NE(ink(METHOD_TABLE, &black), ink(METHOD_TABLE, nullptr));
  }
  for (const auto& [src, dst] : {std::pair{CS_RGB, CS_HSV}, {CS_XYZ, CS_BGR}, {CS_CMY, CS_RGB}, {CS_BGR, CS_RGB}}) {
    for (const uint32_t method : {METHOD_TABLE, METHOD_CUSTOM_TABLE})
      EXPECT_EQ(Converted(MakeConverter(src, dst, Params(method)), source, 1000, 3000, 0xEE), untouched) << src;
  }
}

struct TablesFromFiles : testing::Test {
  static ConversionParams Named(const std::filesystem::path& name) {
    ConversionParams params = Params(METHOD_CUSTOM_TABLE);
    SetName(name, params.sEmulationTableName);
    return params;
  }
  std::filesystem::path Write(const Bytes& content) const { return folder.Write(u8"t\u00e4fel \u8868.tif", content); }

  const Folder folder{"qv_table_test"};
};

TEST_F(TablesFromFiles, GiveWhatTheBuiltInOnesGive) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes entries = ReadResource(table.file), source = RandomBytes(1000 * table.channels);
    EXPECT_EQ(By(Named(Write(TiffOf(entries))), table, source), ByTable(table, source));
  }
}

TEST_F(TablesFromFiles, AreNamedAndReadable) {
  const Bytes whole = TiffOf(ReadResource(kTables[0].file));
  const struct {
    const char* what;
    std::filesystem::path name;
    int32_t status;
  } kCases[] = {{"no name", "", ERR_PROFILE_NAME},
                {"no file", folder.In("nowhere.tif"), ERR_PROFILE_NAME},
                {"no end of the name", std::string(260, 'n'), ERR_PROFILE_NAME},
                {"empty", folder.Write("empty", {}), ERR_FILE_READ},
                {"without its last byte", folder.Write("cut", First(whole, whole.size() - 1)), ERR_FILE_READ}};
  for (const auto& [what, name, status] : kCases) {
    EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, Named(name)), status) << what;
    EXPECT_EQ(InitStatus(CS_RGB, CS_CMYK, Named(name)), SUCCESS) << what << ": this pair reads none";
  }
}

}  // namespace
