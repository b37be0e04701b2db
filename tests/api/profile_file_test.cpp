// Profiles as bytes and as files: parsed, generated, read by the colour engine, and cut short.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>

#include "Qvclr15x.h"
#include "support/files.h"

namespace {

using namespace qv_test;
using testing::Each;

struct ProfileFile : testing::Test {
  ProfileFile() { Q_InitICCProfile(&record, sizeof record); }
  ~ProfileFile() override { Q_FreeICCProfile(&record); }
  int32_t Fill(const Bytes& bytes, bool by_file = false) {
    Q_FreeICCProfile(&record);
    Q_InitICCProfile(&record, sizeof record);
    if (by_file) return Q_FillICCProfileFromICCFile(folder.Write("profile", bytes).string<QWChar>().c_str(), &record);
    return Q_FillICCProfileStructure(&record, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  int32_t FillFromFileOf(const Bytes& bytes) { return Fill(bytes, true); }
  Bytes Image() const { return {record.profileBytes, record.profileBytes + record.profileByteSize}; }

  const Folder folder{"qv_profile_file"};
  const std::filesystem::path path = folder.In("profile");
  const Bytes srgb = Contents(QV_TEST_DATA "/srgb_v4.icc");
  IccProfileRecord record;
};

TEST_F(ProfileFile, IsReadAndWrittenByteForByte) {
  ASSERT_EQ(srgb.size(), 480u);
  for (const bool by_file : {false, true}) {
    ASSERT_EQ(Fill(srgb, by_file), SUCCESS);
    EXPECT_TRUE(record.tagCount == 10 && record.tagDataSize == 480 - 132 - 120 && record.header->model == Sig("ctrl"));
    EXPECT_TRUE(record.header->dateTime.year == 2018 && record.header->dateTime.seconds == 29);
    EXPECT_EQ(Q_GetICCTagTypeSig(&record, Sig("chad")), Sig("sf32"));
    record.header->reserved[27] = 1;  // is never written
    std::fill_n(record.profileBytes, 480, uint8_t{0xEE});
    ASSERT_EQ(Q_GenerateICCPointer(&record), SUCCESS);
    EXPECT_EQ(Image(), srgb);
    ASSERT_EQ(Q_GenerateICCFileA(&record, path.string().c_str()), SUCCESS);
    EXPECT_EQ(Contents(path), srgb);
  }
}

TEST_F(ProfileFile, IsParsedForTwoVersionsExactly) {
  for (const uint32_t version : {0x04000000u, 0x04200000u, 0x02400000u, 0x04300000u, 0x04200001u, 0x05000000u}) {
    SCOPED_TRACE(version);
    Bytes bytes = srgb;
    for (size_t i = 0; i < 4; ++i) bytes[8 + i] = static_cast<uint8_t>(version >> (24 - 8 * i));
    EXPECT_EQ(FillFromFileOf(bytes), SUCCESS);
    EXPECT_EQ(record.header != nullptr, version == 0x04000000 || version == 0x04200000);
    EXPECT_EQ(+record.tagCount, record.header ? 10u : 0u);
    EXPECT_EQ(Image(), bytes);
    EXPECT_EQ(Fill(bytes), version < 0x04000000 ? ERR_ICC_INVALID_PROFILE : SUCCESS);
    EXPECT_EQ(record.header->version, version);
    EXPECT_EQ(Image(), bytes);
  }
}

// What is missing reads as 0, also the end of a number that the cut divides: as of the whole profile padded by hand.
TEST_F(ProfileFile, ShortOrLongOfItsDeclaredSizeIsTakenAsPaddedOrCut) {
  IccProfileRecord padded_record;
  for (size_t length = 0; length <= srgb.size(); length += length < 260 ? 1 : 55) {  // the table ends at 252
    SCOPED_TRACE(length);
    Bytes cut(srgb.begin(), srgb.begin() + static_cast<ptrdiff_t>(length)), padded = cut;
    padded.resize(srgb.size());
    const int32_t status = FillFromFileOf(cut);
    if (length < 12) {
      EXPECT_EQ(status, ERR_FILE_READ);
      EXPECT_FALSE(record.profileBytes || record.header);
      continue;
    }
    Q_InitICCProfile(&padded_record, sizeof padded_record);
    EXPECT_EQ(status, Q_FillICCProfileStructure(&padded_record, padded.data(), 480));
    EXPECT_EQ(Image(), padded);
    EXPECT_EQ(std::memcmp(record.header, padded_record.header, sizeof(IccHeader)), 0);
    ASSERT_EQ(+record.tagCount, +padded_record.tagCount);
    ASSERT_EQ(+record.tagDataSize, +padded_record.tagDataSize);
    if (record.tagCount != 0) {
      EXPECT_EQ(std::memcmp(record.tagTable, padded_record.tagTable, record.tagCount * sizeof(IccTagEntry)), 0);
      EXPECT_EQ(std::memcmp(record.tagData, padded_record.tagData, record.tagDataSize), 0);
    }
    Q_FreeICCProfile(&padded_record);
  }
  Bytes longer = srgb;
  longer.resize(600, 7);
  EXPECT_EQ(FillFromFileOf(longer), SUCCESS);
  EXPECT_EQ(Image(), srgb);
}

TEST_F(ProfileFile, DeclaredSizesOfNothing) {
  Bytes bytes = srgb;
  const auto declare = [&](uint32_t size) {
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(size >> (24 - 8 * i));
    return FillFromFileOf(bytes);
  };
  EXPECT_EQ(declare(0), ERR_ICC_INVALID_PROFILE);
  EXPECT_EQ(FillFromFileOf({0, 0, 0, 0}), ERR_ICC_INVALID_PROFILE) << "before the version is read";
  for (const uint32_t size : {1u, 11u, 131u, 132u, 251u}) {
    EXPECT_EQ(declare(size), size < 132 ? ERR_ICC_INVALID_PROFILE : ERR_FAILURE) << size;
    EXPECT_EQ(+record.profileByteSize, size);
  }
  EXPECT_EQ(declare(252), SUCCESS);
  EXPECT_EQ(+record.tagDataSize, 0u);
}

TEST_F(ProfileFile, CannotBeOpenedOrNamed) {
  const std::string own = folder.In("").string(), missing = folder.In("no/file").string();
  const std::string endless(300, 'a');
  ASSERT_EQ(Fill(srgb), SUCCESS);
  IccProfileRecord other{};
  for (const std::string& name : {own, missing, std::string()}) {
    EXPECT_EQ(Q_FillICCProfileFromICCFileA(name.c_str(), &other), ERR_FILE_OPEN) << name;
    EXPECT_EQ(Q_GenerateICCFileA(&record, name.c_str()), ERR_FILE_OPEN) << name;
  }
  EXPECT_EQ(Q_FillICCProfileFromICCFileA(endless.c_str(), &other), ERR_FAILURE);
  EXPECT_EQ(Q_GenerateICCFileA(&record, endless.c_str()), ERR_FAILURE);
  EXPECT_THAT(std::span(reinterpret_cast<const uint8_t*>(&other), sizeof other), Each(0));
  const auto name = path.string<QWChar>();
  for (const int32_t status :
       {Q_FillICCProfileFromICCFile(nullptr, &other), Q_FillICCProfileFromICCFile(name.c_str(), nullptr),
        Q_FillICCProfileFromICCFileA(nullptr, &other), Q_GenerateICCFile(nullptr, name.c_str()),
        Q_GenerateICCFile(&record, nullptr), Q_GenerateICCFileA(&record, nullptr)}) {
    EXPECT_EQ(status, ERR_INV_PARAMETER);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ProfileFile, ClaimOfMoreThanThereIsLeavesTheFile) {
  ASSERT_EQ(FillFromFileOf(srgb), SUCCESS);
  const auto name = path.string<QWChar>();
  for (const uint64_t claim : {uint64_t{481}, uint64_t{0xFFFFFFFF}, uint64_t{1} << 32, UINT64_MAX}) {
    record.profileByteSize = claim;
    EXPECT_EQ(Q_GenerateICCFile(&record, name.c_str()), ERR_ICC_INVALID_PROFILE) << claim;
  }
  EXPECT_EQ(Contents(path), srgb);
  ++record.header->profileSize;
  EXPECT_EQ(Q_GenerateICCPointer(&record), ERR_ICC_INVALID_PROFILE);
  EXPECT_EQ(+record.profileByteSize, 480u) << "of its parts";
  EXPECT_EQ(Image(), srgb) << "the old bytes";
  record.profileByteSize = 100;
  EXPECT_EQ(Q_GenerateICCFile(&record, name.c_str()), SUCCESS) << "as it stands";
  EXPECT_EQ(Contents(path), Bytes(srgb.begin(), srgb.begin() + 100));
}

}  // namespace
