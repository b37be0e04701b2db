// Lookups in emulation tables against a slow model of their rule, and the tables that spaces have.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <future>
#include <string>
#include <vector>

#include "qvclr/kernels/kernels.h"
#include "qvclr/spaces.h"
#include "qvclr/tables.h"
#include "reference/emulation_model.h"
#include "support/converters.h"
#include "support/guarded.h"

namespace {
using namespace qv;
using namespace qv_test;
using Bytes = std::vector<uint8_t>;
using Pixel = std::array<uint8_t, 4>;
using Signed = EmulationModel::Signed;

constexpr size_t kWidth = 65536;

Pixel EveryPixel(size_t row, size_t x) { return {uint8_t(row), uint8_t(x / 256), uint8_t(x)}; }

// All values of two inks, with 64 combinations of the others.
Pixel InksByPairs(size_t row, size_t x) {
  constexpr uint8_t kLevels[] = {0, 1, 16, 100, 128, 240, 241, 255};
  constexpr size_t kPairs[6][4] = {{0, 1, 2, 3}, {0, 2, 1, 3}, {0, 3, 1, 2}, {1, 2, 0, 3}, {1, 3, 0, 2}, {2, 3, 0, 1}};
  const auto& order = kPairs[row / 64];
  Pixel pixel{};
  pixel[order[0]] = uint8_t(x / 256);
  pixel[order[1]] = uint8_t(x);
  pixel[order[2]] = kLevels[row / 8 % 8];
  pixel[order[3]] = kLevels[row % 8];
  return pixel;
}

void SwapEnds(Bytes& rgb) {
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) std::swap(rgb[i], rgb[i + 2]);
}

struct Sweep {
  const Kernel& kernel;
  EmulationModel model;
  const uint8_t* table;
  Pixel (*pixel)(size_t row, size_t x);
  size_t rows;

  // Empty when kernel and model agree, converting in place; every 16th row also with B first.
  std::string Difference(size_t from, size_t to) const {
    const size_t src_bytes = kernel.src_bytes;
    Bytes src(kWidth * src_bytes), expected(kWidth * 3), converted;
    for (size_t row = from; row < to; ++row) {
      for (size_t x = 0; x < kWidth; ++x) {
        std::copy_n(pixel(row, x).begin(), src_bytes, &src[x * src_bytes]);
        model.Convert(&src[x * src_bytes], &expected[x * 3]);
      }
      for (const bool rgb_first : {true, false}) {
        if (!rgb_first && row % 16 != 0) break;
        if (!rgb_first) SwapEnds(&kernel == &EmuRGBToLab ? src : expected);
        converted = src;
        const RowArgs args{.rgb_first = rgb_first, .table = table};
        if (!Ok(kernel.row(converted.data(), converted.data(), kWidth, args))) return "refused";
        converted.resize(expected.size());
        if (converted == expected) continue;
        const auto at = static_cast<size_t>(std::ranges::mismatch(converted, expected).in1 - converted.begin());
        return testing::PrintToString(pixel(row, at / 3)) + (rgb_first ? ", R first: byte " : ", B first: byte ") +
               std::to_string(at % 3) + " is " + std::to_string(converted[at]);
      }
    }
    return "";
  }
};

TEST(Emulation, EqualsItsModelForEveryInput) {
  GuardedBuffer inks(RandomBytes(3 * 17 * 17 * 17 * 17)), to_lab(RandomBytes(3 * 33 * 33 * 33, 2)),
      of_lab(RandomBytes(3 * 33 * 33 * 33, 3));
  for (GuardedBuffer* table : {&inks, &to_lab, &of_lab}) table->MakeReadOnly();
  const Sweep kSweeps[] = {
      {EmuCMYKToRGB, {4, 16, Signed::kNeither, inks.data()}, inks.data(), InksByPairs, 6 * 64},
      {EmuRGBToLab, {3, 8, Signed::kTarget, to_lab.data()}, to_lab.data(), EveryPixel, 256},
      {EmuLabToRGB, {3, 8, Signed::kSource, of_lab.data()}, of_lab.data(), EveryPixel, 256},
  };
  for (const Sweep& sweep : kSweeps) {
    auto half = std::async(std::launch::async, [&] { return sweep.Difference(0, sweep.rows / 2); });
    EXPECT_EQ(sweep.Difference(sweep.rows / 2, sweep.rows), "") << sweep.kernel.name;
    EXPECT_EQ(half.get(), "") << sweep.kernel.name;
  }
}

TEST(Emulation, GivesWhatIsWorkedOutByHand) {
  using Entry = std::array<uint8_t, 3>;
  constexpr Entry kLower = {200, 0xFF, 0x7F}, kUpper = {101, 0x00, 0x80};
  const struct {
    const char* why;
    const Kernel& kernel;
    Pixel src;
    size_t lower, upper;
    Entry dst;
  } kFacts[] = {
      {"a node", EmuCMYKToRGB, {0, 0, 0, 0}, 0, 0, kLower},
      {"a node", EmuRGBToLab, {8, 8, 8}, 1123, 1123, kLower},
      {"the origin of a and b", EmuLabToRGB, {8, 0x80, 0x80}, 1089, 1089, kLower},
      {"ink and black in between", EmuCMYKToRGB, {1, 0, 0, 239}, 14, 4913 + 15, {150, 127, 127}},
      {"a and b are signed", EmuRGBToLab, {0, 9, 0}, 33, 66, {150, 255, 255}},
      {"the end of an ink", EmuCMYKToRGB, {250, 0, 0, 0}, 15 * 4913, 0, {150, 127, 127}},
      {"the end of blue", EmuRGBToLab, {0, 16, 249}, 97, 66, {150, 255, 255}},
      {"the end of L", EmuLabToRGB, {255, 0x80, 0x80}, 31 * 1089, 0, {150, 127, 127}},
      {"the ends of a and b", EmuLabToRGB, {0, 127, 121}, 31 * 33 + 31, 32 * 33 + 32, {150, 127, 127}},
  };
  for (const auto& fact : kFacts) {
    Bytes table(3 * 17 * 17 * 17 * 17);
    std::ranges::copy(kUpper, &table[3 * fact.upper]);
    std::ranges::copy(kLower, &table[3 * fact.lower]);
    Entry dst{};
    ASSERT_EQ(fact.kernel.row(fact.src.data(), dst.data(), 1, {.table = table.data()}), kSuccess);
    EXPECT_EQ(dst, fact.dst) << fact.kernel.name << ", " << fact.why;
  }
}

TEST(EmulationTables, ServeThreePairsOfSpaces) {
  std::string served;
  for (const Space& src : AllSpaces()) {
    for (const Space& dst : AllSpaces()) {
      if (const EmulationTable* table = TableFor(src.id, dst.id)) {
        served += std::to_string(src.id) + " to " + std::to_string(dst.id) + ": " + table->kernel->name + ' ' +
                  std::to_string(table->resource) + '\n';
      }
    }
  }
  EXPECT_EQ(served,
            "0 to 7: EmuRGBToLab 113\n2 to 0: EmuCMYKToRGB 111\n2 to 12: EmuCMYKToRGB 111\n"
            "7 to 0: EmuLabToRGB 112\n7 to 12: EmuLabToRGB 112\n12 to 7: EmuRGBToLab 113\n");
}

TEST(EmulationTables, AreFoundWhenTheyHoldTheirGrid) {
  for (const EmulationTable* table : {TableFor(CS_CMYK, CS_RGB), TableFor(CS_LAB, CS_RGB), TableFor(CS_RGB, CS_LAB)}) {
    EmulationTable other = *table;
    EXPECT_TRUE(FindBuiltInTable(other)) << table->resource;
    other.bytes = 250564;
    EXPECT_FALSE(FindBuiltInTable(other)) << table->resource << ", too small";
    other = *table;
    other.resource = 105;
    EXPECT_FALSE(FindBuiltInTable(other)) << "no table";
  }
}

}  // namespace
