// Methods 8 and 16: the emulation tables held against the profiles that they were sampled from, and tables from files.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/converters.h"
#include "support/load_module.h"

namespace {

using namespace qv_test;
using Bytes = std::vector<uint8_t>;

struct Table {
  const char* file;
  uint32_t src, dst;
  size_t channels;
  int step;
  double mean_delta_e, max_delta_e;  // bounds, 1.4 times and more of what was measured

  int Nodes() const { return 256 / step + 1; }
  size_t Pixels(const Bytes& source) const { return source.size() / channels; }
  // The node's place in a channel as the byte that it stands for.
  uint8_t NodeByte(int node) const { return static_cast<uint8_t>(std::min(node * step, 255)); }
};

const Table kTables[] = {{"cmyk_rgb.et", CS_CMYK, CS_RGB, 4, 16, 11, 110},
                         {"rgb_lab.et", CS_RGB, CS_LAB, 3, 8, 9, 130},
                         {"lab_rgb.et", CS_LAB, CS_RGB, 3, 8, 4.5, 100}};

ConversionParams TableParams(uint32_t method = METHOD_TABLE) {
  ConversionParams params = Params(method);
  params.nEmulationTableKind = METHOD_TABLE;
  return params;
}

Bytes Entries(const Table& table) {
  std::ifstream file(std::string(QV_RES "/") + table.file, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Bytes Convert(const ConverterPtr& converter, const Bytes& source, size_t pixels, size_t target_bytes,
              uint8_t fill = 0) {
  Bytes target(target_bytes, fill);
  EXPECT_TRUE(converter);
  EXPECT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), static_cast<int32_t>(pixels), 1, 0, 0),
            SUCCESS);
  return target;
}

Bytes ByTable(const Table& table, const Bytes& source) {
  const size_t pixels = table.Pixels(source);
  return Convert(MakeConverter(table.src, table.dst, TableParams()), source, pixels, 3 * pixels);
}

void FlipLab(Bytes& lab) {
  for (size_t i = 0; i < lab.size(); i += 3) {
    lab[i + 1] ^= 0x80;
    lab[i + 2] ^= 0x80;
  }
}

// By the profiles, with Lab coded as the tables have it.
Bytes ByProfiles(const Table& table, Bytes source) {
  const size_t pixels = table.Pixels(source);
  if (table.src == CS_LAB) FlipLab(source);
  Bytes target = Convert(MakeConverter(table.src, table.dst, Params(METHOD_ICC)), source, pixels, 3 * pixels);
  if (table.dst == CS_LAB) FlipLab(target);
  return target;
}

// Every node as a pixel, in the order of the entries.
Bytes NodePixels(const Table& table) {
  Bytes pixels;
  std::array<int, 4> node{};
  for (;;) {
    for (size_t i = 0; i < table.channels; ++i) pixels.push_back(table.NodeByte(node[i]));
    size_t channel = table.channels;
    while (channel > 0 && ++node[channel - 1] == table.Nodes()) node[--channel] = 0;
    if (channel == 0) break;
  }
  if (table.src == CS_LAB) FlipLab(pixels);
  return pixels;
}

// The defined mean of two corners. The upper one wraps to the first node, but for a and b of Lab.
std::array<uint8_t, 3> SlowRule(const Table& table, const Bytes& entries, const uint8_t* pixel) {
  size_t lower = 0, upper = 0;
  for (size_t i = 0; i < table.channels; ++i) {
    const bool is_signed = table.src == CS_LAB && i > 0;
    const double place = (pixel[i] ^ (is_signed ? 0x80 : 0)) / static_cast<double>(table.step);
    const auto below = static_cast<size_t>(std::floor(place));
    auto above = static_cast<size_t>(std::ceil(place));
    if (above + 1 == static_cast<size_t>(table.Nodes()) && !is_signed) above = 0;
    lower = lower * static_cast<size_t>(table.Nodes()) + below;
    upper = upper * static_cast<size_t>(table.Nodes()) + above;
  }
  std::array<uint8_t, 3> mean{};
  for (size_t i = 0; i < 3; ++i) {
    int a = entries[3 * lower + i], b = entries[3 * upper + i];
    if (table.dst == CS_LAB && i > 0) a = (a ^ 0x80) - 128, b = (b ^ 0x80) - 128;
    mean[i] = static_cast<uint8_t>((a + b) >> 1);
  }
  return mean;
}

TEST(Tables, HoldTheProfilesAtTheirNodes) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes entries = Entries(table), nodes = NodePixels(table);
    const Bytes by_table = ByTable(table, nodes), by_profiles = ByProfiles(table, nodes);
    ASSERT_GE(entries.size(), by_profiles.size());
    EXPECT_TRUE(std::equal(by_profiles.begin(), by_profiles.end(), entries.begin())) << "the resource is another one";
    size_t wrapped = 0, beside_profiles = 0, beside_rule = 0;
    for (size_t i = 0; i < table.Pixels(nodes); ++i) {
      const uint8_t* pixel = &nodes[i * table.channels];
      const bool wraps =
          std::any_of(pixel, pixel + table.channels, [&](uint8_t byte) { return byte % table.step != 0; });
      const auto rule = SlowRule(table, entries, pixel);
      wrapped += wraps;
      beside_profiles += !wraps && !std::equal(&by_table[3 * i], &by_table[3 * i] + 3, &by_profiles[3 * i]);
      beside_rule += !std::equal(rule.begin(), rule.end(), &by_table[3 * i]);
    }
    EXPECT_EQ(beside_profiles, 0u);
    EXPECT_EQ(beside_rule, 0u);
    const size_t inner = static_cast<size_t>(table.Nodes() - 1);
    EXPECT_EQ(table.Pixels(nodes) - wrapped, inner * inner * inner * (table.channels == 4 ? inner : 1));
  }
}

using Lab = std::array<double, 3>;

std::vector<Lab> LabOf(const Table& table, const Bytes& pixels) {
  std::vector<Lab> lab(pixels.size() / 3);
  if (table.dst == CS_LAB) {
    const auto of_signed = [](uint8_t byte) { return static_cast<double>(static_cast<int8_t>(byte)); };
    for (size_t i = 0; i < lab.size(); ++i) {
      lab[i] = {pixels[3 * i] / 2.55, of_signed(pixels[3 * i + 1]), of_signed(pixels[3 * i + 2])};
    }
    return lab;
  }
  cmsHPROFILE srgb = cmsOpenProfileFromFile(QV_RES "/srgb.icc", "r"), pcs = cmsCreateLab4Profile(nullptr);
  cmsHTRANSFORM transform =
      cmsCreateTransform(srgb, TYPE_RGB_8, pcs, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
  cmsDoTransform(transform, pixels.data(), lab.data(), static_cast<cmsUInt32Number>(lab.size()));
  cmsDeleteTransform(transform);
  cmsCloseProfile(srgb);
  cmsCloseProfile(pcs);
  return lab;
}

TEST(Tables, StayNearTheProfilesBetweenTheirNodes) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes source = RandomBytes(1'000'000 * table.channels);
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

constexpr int32_t kPixels = 1000;

TEST(Tables, ServeBothOrdersOfRgbAndLeaveInkToTheFormula) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const auto swapped = [](uint32_t space) { return space == CS_RGB ? uint32_t{CS_BGR} : space; };
    const auto swap_ends = [](Bytes pixels) {
      for (size_t i = 0; i < pixels.size(); i += 3) std::swap(pixels[i], pixels[i + 2]);
      return pixels;
    };
    const Bytes source = RandomBytes(kPixels * table.channels), expected = ByTable(table, source);
    const ConverterPtr bgr = MakeConverter(swapped(table.src), swapped(table.dst), TableParams());
    const Bytes given = table.src == CS_RGB ? swap_ends(source) : source;
    const Bytes made = Convert(bgr, given, kPixels, expected.size());
    EXPECT_EQ(table.dst == CS_RGB ? swap_ends(made) : made, expected);
  }
  const Bytes source = RandomBytes(kPixels * 3);
  const CmykParams black = {sizeof black, 730, 0};
  for (const uint32_t rgb : {CS_RGB, CS_BGR}) {
    const auto ink = [&](uint32_t method, const CmykParams* cmyk) {
      ConversionParams params = TableParams(method);
      params.pCmykParams = cmyk;
      return Convert(MakeConverter(rgb, CS_CMYK, params), source, kPixels, kPixels * 4);
    };
    for (const CmykParams* cmyk : {&black, static_cast<const CmykParams*>(nullptr)}) {
      EXPECT_EQ(ink(METHOD_TABLE, cmyk), ink(METHOD_FORMULA, cmyk));
    }
    EXPECT_NE(ink(METHOD_TABLE, &black), ink(METHOD_TABLE, nullptr));
  }
  for (const auto& [src, dst] : {std::pair{CS_RGB, CS_HSV}, {CS_XYZ, CS_BGR}, {CS_CMY, CS_RGB}, {CS_BGR, CS_RGB}}) {
    for (const uint32_t method : {METHOD_TABLE, METHOD_CUSTOM_TABLE}) {
      const Bytes untouched(kPixels * 3, 0xEE);
      EXPECT_EQ(Convert(MakeConverter(src, dst, TableParams(method)), source, kPixels, kPixels * 3, 0xEE), untouched)
          << src << " to " << dst << " by " << method;
    }
  }
}

TEST(Tables, NeedTheirKindOnlyWhereTheyAreActive) {
  ColorConverter* handle = nullptr;
  for (const uint32_t kind : {0u, 1u, 7u, 9u, 16u, 0x80000008u}) {
    ConversionParams params = TableParams();
    params.nEmulationTableKind = kind;
    EXPECT_EQ(Q_ClrInit(&handle, CS_CMYK, CS_RGB, &params), ERR_INV_PARAMETER) << kind;
    params.nActiveMethod = METHOD_FORMULA;
    params.nMethodMask = METHOD_FORMULA | METHOD_TABLE;
    EXPECT_TRUE(MakeConverter(CS_CMYK, CS_RGB, params)) << kind;
  }
}

TEST(Tables, ThatAreMissingShowInConversion) {
  void *library = LoadModule(kLibrary), *satellite = LoadModule(kSatellite);
  ASSERT_TRUE(library && satellite);
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes source = RandomBytes(table.channels), expected = ByTable(table, source);
    const ConverterPtr made_before = MakeConverter(table.src, table.dst, TableParams());
    SetResModule(satellite);
    const ConverterPtr without = MakeConverter(table.src, table.dst, TableParams());
    ASSERT_TRUE(without);
    Bytes pixel(3, 0xEE);
    EXPECT_EQ(Q_ClrConvert(without.get(), source.data(), pixel.data(), 1, 1, 0, 0), ERR_UNSUPPORTED_METHOD);
    EXPECT_EQ(pixel, Bytes(3, 0xEE));
    EXPECT_EQ(Convert(made_before, source, 1, 3), expected) << "it keeps the table that it was made with";
    SetResModule(library);
  }
  UnloadModule(satellite);
  UnloadModule(library);
}

class TablesFromFiles : public testing::Test {
 protected:
  TablesFromFiles() { std::filesystem::create_directories(folder_); }
  ~TablesFromFiles() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path Write(const Bytes& content) const {
    auto name = folder_ / u8"t\u00e4fel \u8868.tif";
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return name;
  }

  static ConversionParams Named(const std::filesystem::path& name) {
    ConversionParams params = Params(METHOD_CUSTOM_TABLE);
    const auto wide = name.string<QWChar>();
    std::copy_n(wide.begin(), std::min(wide.size(), std::size(params.sEmulationTableName)), params.sEmulationTableName);
    return params;
  }

  const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "qv_table_test";
};

// Little-endian, a directory of the tags that tell where the samples are, then those of a square.
Bytes Tiff(const Bytes& samples) {
  const auto side = static_cast<uint32_t>(std::sqrt(static_cast<double>(samples.size()) / 3));
  const std::pair<uint16_t, uint32_t> tags[] = {
      {256, side}, {257, side}, {262, 2}, {273, 8 + 2 + 12 * 5 + 4}, {277, 3}};
  Bytes file = {'I', 'I', '*', 0, 8, 0, 0, 0, 5, 0};
  const auto add = [&](uint32_t number, int bytes) {
    for (int i = 0; i < bytes; ++i) file.push_back(static_cast<uint8_t>(number >> 8 * i));
  };
  for (const auto& [tag, value] : tags) {
    add(tag, 2), add(4, 2), add(1, 4), add(value, 4);
  }
  add(0, 4);
  file.insert(file.end(), samples.begin(), samples.end());
  return file;
}

TEST_F(TablesFromFiles, GiveWhatTheBuiltInOnesGive) {
  for (const Table& table : kTables) {
    SCOPED_TRACE(table.file);
    const Bytes entries = Entries(table);
    const Bytes source = RandomBytes(kPixels * table.channels), expected = ByTable(table, source);
    const ConversionParams params = Named(Write(Tiff(entries)));
    EXPECT_EQ(Convert(MakeConverter(table.src, table.dst, params), source, kPixels, kPixels * 3), expected);

    // Its own samples, and zeros where it has none.
    Bytes altered(entries.begin(), entries.begin() + 3 * 6 * 6);
    for (uint8_t& byte : altered) byte ^= 0xFF;
    const ConverterPtr short_table = MakeConverter(table.src, table.dst, Named(Write(Tiff(altered))));
    Bytes first_and_last(2 * table.channels);
    std::fill_n(first_and_last.begin() + static_cast<ptrdiff_t>(table.channels), table.channels,
                table.NodeByte(table.Nodes() - 2));
    if (table.src == CS_LAB) FlipLab(first_and_last);
    EXPECT_EQ(Convert(short_table, first_and_last, 2, 6), (Bytes{altered[0], altered[1], altered[2], 0, 0, 0}));
  }
}

TEST_F(TablesFromFiles, AreNamedAndReadable) {
  const std::string text = "no table at all, but long enough for a directory to be looked for somewhere";
  const auto text_file = Write(Bytes(text.begin(), text.end()));
  const Bytes whole = Tiff(Entries(kTables[0]));
  const struct {
    const char* what;
    std::filesystem::path name;
    int32_t status;
  } kCases[] = {{"no name", "", ERR_PROFILE_NAME},
                {"no file", folder_ / "nowhere.tif", ERR_PROFILE_NAME},
                {"no end of the name", std::string(260, 'n'), ERR_PROFILE_NAME},
                {"a text", text_file, ERR_FILE_READ}};
  ColorConverter* handle = nullptr;
  for (const auto& [what, name, status] : kCases) {
    const ConversionParams params = Named(name);
    for (const Table& table : kTables) EXPECT_EQ(Q_ClrInit(&handle, table.src, table.dst, &params), status) << what;
    EXPECT_TRUE(MakeConverter(CS_RGB, CS_CMYK, params)) << what << ": this pair reads none";
  }
  for (const size_t bytes : {size_t{0}, size_t{9}, size_t{40}, whole.size() - 1}) {
    const ConversionParams params = Named(Write(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(bytes))));
    EXPECT_EQ(Q_ClrInit(&handle, CS_CMYK, CS_RGB, &params), ERR_FILE_READ) << bytes;
  }
}

}  // namespace
