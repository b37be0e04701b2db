// Profiles as records, bytes and files: header, setters and tags; parsed, generated, and cut short.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Qvclr15x.h"
#include "support/files.h"

namespace {

using namespace std::string_view_literals;
using namespace qv_test;
using testing::Each;

constexpr uint32_t kRaw = Sig("Qraw");

struct ProfileFile : testing::Test {
  ProfileFile() { Q_InitICCProfile(&record, sizeof record); }
  ~ProfileFile() override { Q_FreeICCProfile(&record); }
  int32_t Fill(const Bytes& bytes, bool by_file = false) {
    Q_FreeICCProfile(&record);
    Q_InitICCProfile(&record, sizeof record);
    if (by_file) return Q_FillICCProfileFromICCFile(folder.Write("profile", bytes).string<QWChar>().c_str(), &record);
    return Q_FillICCProfileStructure(&record, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  Bytes Image() const { return {record.profileBytes, record.profileBytes + record.profileByteSize}; }

  const Folder folder{"qv_profile_file"};
  const std::filesystem::path path = folder.In("profile");
  const Bytes srgb = Contents(QV_TEST_DATA "/srgb_v4.icc");
  IccProfileRecord record;
};

struct ProfileRecord : ProfileFile {
  ProfileRecord() { Q_InitICCHeader(&record); }
};

TEST(ProfileRecords, AreInitializedAsFarAsAsked) {
  for (const uint32_t size : {0u, 3u, 30u, 56u}) {
    std::array<uint8_t, 64> bytes;
    bytes.fill(0xEE);
    auto* record = reinterpret_cast<IccProfileRecord*>(bytes.data());
    EXPECT_EQ(Q_InitICCProfile(record, size), SUCCESS);
    EXPECT_EQ(+record->structSize, 56u);
    const size_t zeroed = std::max(size, 4u);
    EXPECT_THAT(std::span(bytes).subspan(4, zeroed - 4), Each(0));
    EXPECT_THAT(std::span(bytes).subspan(zeroed), Each(0xEE));
  }
  IccProfileRecord record;
  EXPECT_EQ(Q_InitICCProfile(&record, 57), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_InitICCProfile(nullptr, 56), ERR_INV_PARAMETER);
}

TEST_F(ProfileRecord, HasAHeaderOfItsOwnAndReleasesAllButItsNumbers) {
  const IccHeader expected = {
      .profileSize = 132, .version = 0x04200000, .signature = Sig("acsp"), .illuminant = {0xF6D6, 0x10000, 0xD32D}};
  EXPECT_EQ(std::memcmp(record.header, &expected, sizeof expected), 0);
  uint8_t byte = 1;
  const IccUnknownTagType tag = {0, 0, &byte, 1};
  EXPECT_EQ(Q_SetICCTagData(&record, &tag, Sig("desc"), kRaw), ERR_ICC_UNKNOWN_TAG_TYPE);
  EXPECT_EQ(Q_GenerateICCPointer(&record), SUCCESS);
  const IccHeader* header = record.header;
  std::memset(record.header, 0xEE, sizeof *record.header);
  EXPECT_EQ(Q_InitICCHeader(&record), SUCCESS);
  EXPECT_TRUE(record.header == header && std::memcmp(header, &expected, sizeof expected) == 0);
  Q_FreeICCProfile(&record);
  EXPECT_FALSE(record.header || record.tagTable || record.tagData || record.profileBytes);
  EXPECT_TRUE(record.structSize == 56 && record.tagCount == 1 && record.tagDataSize == 12);
  EXPECT_EQ(+record.profileByteSize, 156u);
  Q_FreeICCProfile(&record);  // once more is no harm
  Q_FreeICCProfile(nullptr);
}

// Signatures without anything between them.
std::vector<uint64_t> Signatures(std::string_view text) {
  std::vector<uint64_t> signatures;
  for (; !text.empty(); text.remove_prefix(4)) signatures.push_back(Sig(text.data()));
  return signatures;
}

TEST_F(ProfileRecord, SettersStoreWhatTheyAcceptAndTouchNothingElse) {
  const auto spaces = Signatures(
      "XYZ Lab Luv YCbrYxy RGB GRAYHSV HLS CMYKCMY 2CLR3CLR4CLR5CLR6CLR7CLR8CLR9CLRACLRBCLRCCLRDCLRECLRFCLR");
  const std::vector<uint64_t> any = {0, 1, Sig("abcd"), 0xFFFFFFFF};
  const struct {
    const char* name;
    std::function<int32_t(IccProfileRecord*, uint64_t)> set;
    size_t at, bytes;  // in the header
    std::vector<uint64_t> accepted, refused;
    uint64_t stored_bits = UINT64_MAX;
  } kSetters[] = {
      {"CMM", Q_SetICCCMMType, 4, 4, any, {}},
      {"class", Q_SetICCDeviceClass, 12, 4, Signatures("scnrmntrprtrlinkspacabstnmcl"),
       Signatures("\0\0\0\0MNTRmnt rtnm"sv)},
      {"space", Q_SetICCColorSpace, 16, 4, spaces, Signatures("\0\0\0\0rgb 1CLRGCLR BGR"sv)},
      {"connection", Q_SetICCConnectionSpace, 20, 4, Signatures("XYZ Lab "), Signatures("\0\0\0\0RGB Luv "sv)},
      {"platform",
       Q_SetICCPrimaryPlatform,
       40,
       4,
       Signatures("\0\0\0\0APPLMSFTSGI SUNW"sv),
       {1, Sig("TGNT"), 0xFFFFFFFF}},
      {"flags", Q_SetICCFlags, 44, 4, {0, 3, 4, 0xFFFFFFFE}, {}, 3},
      {"manufacturer", Q_SetICCDevManufacturer, 48, 4, any, {}},
      {"model", Q_SetICCDevModel, 52, 4, any, {}},
      {"attributes", Q_SetICCDeviceAttributes, 56, 8, {0, 15, 16, UINT64_MAX, 1ull << 32}, {}, 15},
      {"intent", Q_SetICCRenderingIntent, 64, 4, {0, 1, 2, 3}, {4, 0x10000, 0xFFFFFFFF}},
      {"creator", Q_SetICCCreator, 80, 4, any, {}},
  };
  for (const auto& setter : kSetters) {
    const auto set = [&](uint64_t given, int32_t status) {
      std::memset(record.header, 0xEE, sizeof *record.header);
      record.header->deviceClass = Sig("mntr");
      IccHeader expected = *record.header;
      const uint64_t stored = given & setter.stored_bits;
      if (status == SUCCESS) std::memcpy(reinterpret_cast<uint8_t*>(&expected) + setter.at, &stored, setter.bytes);
      EXPECT_EQ(setter.set(&record, given), status) << setter.name << ' ' << given;
      EXPECT_EQ(std::memcmp(record.header, &expected, sizeof expected), 0) << setter.name << ' ' << given;
    };
    for (const uint64_t given : setter.accepted) set(given, SUCCESS);
    for (const uint64_t given : setter.refused) set(given, ERR_INV_PARAMETER);
    IccProfileRecord bare{};
    for (IccProfileRecord* none : {static_cast<IccProfileRecord*>(nullptr), &bare})
      EXPECT_EQ(setter.set(none, setter.accepted[0]), ERR_INV_PARAMETER) << setter.name;
  }

  record.header->deviceClass = Sig("link");
  for (const uint64_t space : spaces) EXPECT_EQ(Q_SetICCConnectionSpace(&record, uint32_t(space)), SUCCESS);
  EXPECT_EQ(Q_SetICCConnectionSpace(&record, 0), ERR_INV_PARAMETER);
  record.header->deviceClass = 0;
  EXPECT_EQ(Q_SetICCConnectionSpace(&record, Sig("XYZ ")), ERR_INV_PARAMETER) << "no class yet";

  const IccDateTime date = {2009, 13, 32, 25, 61, 0xFFFF};  // not looked into
  EXPECT_EQ(Q_SetICCDateTime(&record, nullptr), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_SetICCDateTime(&record, &date), SUCCESS);
  EXPECT_EQ(std::memcmp(&record.header->dateTime, &date, sizeof date), 0);
  std::memset(record.header, 0xEE, sizeof *record.header);
  EXPECT_EQ(Q_SetICCProfileId(&record), SUCCESS);
  EXPECT_THAT(record.header->profileId, Each(0));
  EXPECT_THAT(std::span(reinterpret_cast<uint8_t*>(record.header), 84), Each(0xEE));
  EXPECT_THAT(record.header->reserved, Each(0xEE));
  IccProfileRecord bare{};
  EXPECT_TRUE(Q_SetICCProfileId(&bare) == SUCCESS && Q_SetICCProfileId(nullptr) == ERR_INV_PARAMETER);
}

TEST_F(ProfileRecord, RefusesWhatIsMissing) {
  uint8_t byte = 0;
  IccUnknownTagType tag = {0, 0, &byte, 1}, without_array = {0, 0, nullptr, 0}, unreadable = {0, 0, &byte, 0x7FFFFFFF};
  IccProfileRecord bare{};
  for (const int32_t status :
       {Q_SetICCTagData(nullptr, &tag, 0, kRaw), Q_SetICCTagData(&record, nullptr, 0, kRaw),
        Q_SetICCTagData(&bare, &tag, 0, kRaw), Q_SetICCTagData(&record, &without_array, 0, kRaw),
        Q_SetICCTagData(&record, &unreadable, 0, kRaw), Q_GetICCTagData(nullptr, &tag, 0),
        Q_GetICCTagData(&record, nullptr, 0), Q_DeleteICCTag(nullptr, 0, nullptr), Q_DeleteICCTag(&bare, 0, nullptr),
        Q_CreateICCTagData(nullptr, &tag, kRaw), Q_CreateICCTagData(&tag, nullptr, kRaw),
        Q_CreateICCTagData(&tag, &without_array, kRaw), Q_InitICCHeader(nullptr), Q_GenerateICCPointer(nullptr),
        Q_GenerateICCPointer(&bare), Q_FillICCProfileStructure(nullptr, &byte, 1),
        Q_FillICCProfileStructure(&bare, nullptr, 1), Q_FillICCProfileStructure(&bare, &byte, 0)}) {
    EXPECT_EQ(status, ERR_INV_PARAMETER);
  }
  EXPECT_EQ(Q_GetICCTagData(&record, &tag, 0), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_TRUE(Q_GetICCTagTypeSig(nullptr, 0) == 0 && Q_GetICCTagTypeSig(&record, 0) == 0);
  EXPECT_TRUE(record.tagCount == 0 && record.header->profileSize == 132 && tag.data == &byte);
  Q_FreeICCTagType(nullptr, kRaw);
}

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
    EXPECT_EQ(Fill(bytes, true), SUCCESS);
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
  for (size_t length = 0; length <= srgb.size(); length += length < 260 ? 1 : 55) {  // the table ends at 252
    SCOPED_TRACE(length);
    Bytes padded = First(srgb, length);
    padded.resize(srgb.size());
    const auto outcome = [&](const Bytes& bytes, bool by_file) {
      const int32_t status = Fill(bytes, by_file);
      const Bytes data(record.tagData, record.tagData + record.tagDataSize);
      return std::tuple(status, Image(), data, +record.tagCount, record.header ? record.header->version : 0);
    };
    const auto expected = outcome(padded, false);
    if (length >= 12)
      EXPECT_EQ(outcome(First(srgb, length), true), expected);
    else
      EXPECT_EQ(outcome(First(srgb, length), true), std::tuple(ERR_FILE_READ, Bytes(), Bytes(), 0u, 0u));
  }
  Bytes longer = srgb;
  longer.resize(600, 7);
  EXPECT_EQ(Fill(longer, true), SUCCESS);
  EXPECT_EQ(Image(), srgb);
}

TEST_F(ProfileFile, DeclaredSizesOfNothing) {
  Bytes bytes = srgb;
  const auto declare = [&](uint32_t size) {
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(size >> (24 - 8 * i));
    return Fill(bytes, true);
  };
  EXPECT_EQ(declare(0), ERR_ICC_INVALID_PROFILE);
  EXPECT_EQ(Fill({0, 0, 0, 0}, true), ERR_ICC_INVALID_PROFILE) << "before the version is read";
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
  ASSERT_EQ(Fill(srgb, true), SUCCESS);
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
