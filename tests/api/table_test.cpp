// Methods 8 and 16: the emulation tables held against the profiles that they were sampled from, and tables from files.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
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
  double mean_delta_e, max_delta_e;  // bounds, 1.4 times and more of what was measured

  size_t Pixels(const Bytes& source) const { return source.size() / channels; }
};

const Table kTables[] = {{"cmyk_rgb.et", CS_CMYK, CS_RGB, 4, 16, 11, 110},
                         {"rgb_lab.et", CS_RGB, CS_LAB, 3, 8, 9, 130},
                         {"lab_rgb.et", CS_LAB, CS_RGB, 3, 8, 4.5, 100}};

Bytes By(const ConversionParams& params, const Table& table, const Bytes& source) {
  const size_t pixels = table.Pixels(source);
  return Converted(MakeConverter(table.src, table.dst, params), source, pixels, 3 * pixels);
}
Bytes ByTable(const Table& table, const Bytes& source) { return By(Params(METHOD_TABLE), table, source); }

Bytes LabFlipped(Bytes lab) {
  for (size_t i = 0; i < lab.size(); i += 3) lab[i + 1] ^= 0x80, lab[i + 2] ^= 0x80;
  return lab;
}

// By the profiles, with Lab coded as the tables have it.
Bytes ByProfiles(const Table& table, const Bytes& source) {
  const Bytes target = By(Params(METHOD_ICC), table, table.src == CS_LAB ? LabFlipped(source) : source);
  return table.dst == CS_LAB ? LabFlipped(target) : target;
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

TEST(Tables, HoldTheProfilesAtTheirNodes) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes entries = ReadResource(table.file), nodes = NodePixels(table);
    const Bytes by_table = ByTable(table, nodes), by_profiles = ByProfiles(table, nodes);
    ASSERT_GE(entries.size(), by_profiles.size());
    EXPECT_EQ(First(entries, by_profiles.size()), by_profiles) << "the resource is another one";
    for (size_t i = 0; i < table.Pixels(nodes); ++i) {
      const uint8_t* pixel = &nodes[i * table.channels];
      const bool wraps = std::any_of(pixel, pixel + table.channels, [&](uint8_t byte) { return byte % table.step; });
      ASSERT_TRUE(wraps || std::equal(&by_table[3 * i], &by_table[3 * i] + 3, &by_profiles[3 * i])) << i;
    }
  }
}

using Lab = std::array<double, 3>;

std::vector<Lab> LabOf(const Table& table, const Bytes& pixels) {
  std::vector<Lab> lab(pixels.size() / 3);
  if (table.dst == CS_LAB) {
    const auto of_signed = [](uint8_t byte) { return static_cast<double>(static_cast<int8_t>(byte)); };
    for (size_t i = 0; i < lab.size(); ++i)
      lab[i] = {pixels[3 * i] / 2.55, of_signed(pixels[3 * i + 1]), of_signed(pixels[3 * i + 2])};
    return lab;
  }
  cmsHPROFILE srgb = cmsOpenProfileFromFile(QV_RES "/srgb.icc", "r"), pcs = cmsCreateLab4Profile(nullptr);
  cmsHTRANSFORM transform =
      cmsCreateTransform(srgb, TYPE_RGB_8, pcs, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
  cmsDoTransform(transform, pixels.data(), lab.data(), static_cast<cmsUInt32Number>(lab.size()));
  cmsDeleteTransform(transform);
  for (cmsHPROFILE used : {srgb, pcs}) cmsCloseProfile(used);
  return lab;
}

TEST(Tables, StayNearTheProfilesBetweenTheirNodes) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes source = RandomBytes(200'000 * table.channels);
    const auto by_table = LabOf(table, ByTable(table, source)), by_profiles = LabOf(table, ByProfiles(table, source));
    double sum = 0, most = 0;
    for (size_t i = 0; i < by_table.size(); ++i) {
      const auto [l, a, b] = by_table[i];
      const double delta = std::hypot(l - by_profiles[i][0], a - by_profiles[i][1], b - by_profiles[i][2]);
      sum += delta;
      most = std::max(most, delta);
    }
    const double mean = sum / static_cast<double>(by_table.size());
    EXPECT_LT(mean, table.mean_delta_e);
    EXPECT_LT(most, table.max_delta_e);
    RecordProperty(std::string(table.file) + ".mean_delta_e", std::to_string(mean));
    RecordProperty(std::string(table.file) + ".max_delta_e", std::to_string(most));
  }
}

TEST(Tables, ServeBothOrdersOfRgbAndLeaveInkToTheFormula) {
  const auto bgr = [](uint32_t space) { return space == CS_RGB ? uint32_t{CS_BGR} : space; };
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes source = RandomBytes(1000 * table.channels), expected = ByTable(table, source);
    Table swapped = table;
    swapped.src = bgr(table.src), swapped.dst = bgr(table.dst);
    const Bytes made = ByTable(swapped, table.src == CS_RGB ? EndsSwapped(source) : source);
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

TEST(Tables, NeedTheirKindOnlyWhereTheyAreActive) {
  for (const uint32_t kind : {0u, 1u, 7u, 9u, 16u, 0x80000008u}) {
    ConversionParams params = Params(METHOD_TABLE);
    params.nEmulationTableKind = kind;
    EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), ERR_INV_PARAMETER) << kind;
    params.nActiveMethod = METHOD_FORMULA;
    params.nMethodMask = METHOD_FORMULA | METHOD_TABLE;
    EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), SUCCESS) << kind;
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

    // Its own samples, and zeros where it has none.
    Bytes altered = First(entries, 3 * 6 * 6), first_and_last(2 * table.channels);
    for (uint8_t& byte : altered) byte ^= 0xFF;
    std::fill_n(first_and_last.begin() + static_cast<ptrdiff_t>(table.channels), table.channels,
                static_cast<uint8_t>(256 - table.step));
    if (table.src == CS_LAB) first_and_last = LabFlipped(first_and_last);
    EXPECT_EQ(By(Named(Write(TiffOf(altered))), table, first_and_last),
              (Bytes{altered[0], altered[1], altered[2], 0, 0, 0}));
  }
}

TEST_F(TablesFromFiles, AreNamedAndReadable) {
  const Bytes whole = TiffOf(ReadResource(kTables[0].file));
  const auto text = Text("no table at all, but long enough for a directory to be looked for somewhere");
  const struct {
    const char* what;
    std::filesystem::path name;
    int32_t status;
  } kCases[] = {{"no name", "", ERR_PROFILE_NAME},
                {"no file", folder.In("nowhere.tif"), ERR_PROFILE_NAME},
                {"no end of the name", std::string(260, 'n'), ERR_PROFILE_NAME},
                {"a text", folder.Write("text", text), ERR_FILE_READ},
                {"empty", folder.Write("empty", {}), ERR_FILE_READ},
                {"cut in its directory", folder.Write("directory", First(whole, 40)), ERR_FILE_READ},
                {"without its last byte", folder.Write("cut", First(whole, whole.size() - 1)), ERR_FILE_READ}};
  for (const auto& [what, name, status] : kCases) {
    EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, Named(name)), status) << what;
    EXPECT_EQ(InitStatus(CS_RGB, CS_CMYK, Named(name)), SUCCESS) << what << ": this pair reads none";
  }
}

}  // namespace
