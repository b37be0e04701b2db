// Records of profiles by the exported functions: header, setters, tags.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <vector>

#include "Qvclr15x.h"
#include "support/bytes.h"

namespace {

using qv_test::Sig;
using testing::Each, testing::ElementsAre;

constexpr uint32_t kRaw = Sig("Qraw");

struct ProfileRecord : testing::Test {
  ProfileRecord() {
    Q_InitICCProfile(&record, sizeof record);
    Q_InitICCHeader(&record);
  }
  ~ProfileRecord() override { Q_FreeICCProfile(&record); }

  int32_t Set(uint32_t signature, std::vector<uint8_t> payload) {
    payload.reserve(1);  // an empty array is not a null one
    const IccUnknownTagType tag = {0, 0, payload.data(), static_cast<uint32_t>(payload.size())};
    return Q_SetICCTagData(&record, &tag, signature, kRaw);
  }
  std::vector<uint32_t> Offsets() const {
    std::vector<uint32_t> offsets;
    for (uint32_t i = 0; i < record.tagCount; ++i) offsets.push_back(record.tagTable[i].offset);
    return offsets;
  }
  std::span<const uint8_t> Data() const { return {record.tagData, record.tagDataSize}; }

  IccProfileRecord record;
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
  Set(Sig("desc"), {1});
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

template <typename Number>
struct Setter {
  const char* name;
  int32_t (*set)(IccProfileRecord*, Number);
  size_t at;                                        // in the header
  std::vector<std::pair<Number, Number>> accepted;  // given, stored
  std::vector<Number> refused;
};

template <typename Number>
void CheckSetters(IccProfileRecord& record, const std::vector<Setter<Number>>& setters) {
  for (const auto& setter : setters) {
    const auto set = [&](Number given, int32_t status, const Number* stored) {
      std::memset(record.header, 0xEE, sizeof *record.header);
      record.header->deviceClass = Sig("mntr");
      IccHeader expected = *record.header;
      if (stored) std::memcpy(reinterpret_cast<uint8_t*>(&expected) + setter.at, stored, sizeof *stored);
      EXPECT_EQ(setter.set(&record, given), status) << setter.name << ' ' << given;
      EXPECT_EQ(std::memcmp(record.header, &expected, sizeof expected), 0) << setter.name << ' ' << given;
    };
    for (const auto& [given, stored] : setter.accepted) set(given, SUCCESS, &stored);
    for (const Number given : setter.refused) set(given, ERR_INV_PARAMETER, nullptr);
    IccProfileRecord bare{};
    EXPECT_EQ(setter.set(nullptr, setter.accepted[0].first), ERR_INV_PARAMETER) << setter.name;
    EXPECT_EQ(setter.set(&bare, setter.accepted[0].first), ERR_INV_PARAMETER) << setter.name;
  }
}

std::vector<std::pair<uint32_t, uint32_t>> Kept(std::initializer_list<uint32_t> values) {
  std::vector<std::pair<uint32_t, uint32_t>> pairs;
  for (const uint32_t value : values) pairs.emplace_back(value, value);
  return pairs;
}

TEST_F(ProfileRecord, SettersStoreWhatTheyAcceptAndTouchNothingElse) {
  const auto spaces = Kept({Sig("XYZ "), Sig("Lab "), Sig("Luv "), Sig("YCbr"), Sig("Yxy "), Sig("RGB "), Sig("GRAY"),
                            Sig("HSV "), Sig("HLS "), Sig("CMYK"), Sig("CMY "), Sig("2CLR"), Sig("3CLR"), Sig("4CLR"),
                            Sig("5CLR"), Sig("6CLR"), Sig("7CLR"), Sig("8CLR"), Sig("9CLR"), Sig("ACLR"), Sig("BCLR"),
                            Sig("CCLR"), Sig("DCLR"), Sig("ECLR"), Sig("FCLR")});
  const auto any = Kept({0, 1, Sig("abcd"), 0xFFFFFFFF});
  const std::vector<Setter<uint32_t>> setters = {
      {"CMM", Q_SetICCCMMType, 4, any, {}},
      {"class",
       Q_SetICCDeviceClass,
       12,
       Kept({Sig("scnr"), Sig("mntr"), Sig("prtr"), Sig("link"), Sig("spac"), Sig("abst"), Sig("nmcl")}),
       {0, Sig("MNTR"), Sig("mnt "), 0x72746E6D}},
      {"space", Q_SetICCColorSpace, 16, spaces, {0, Sig("rgb "), Sig("1CLR"), Sig("GCLR"), 0x20424752}},
      {"connection", Q_SetICCConnectionSpace, 20, Kept({Sig("XYZ "), Sig("Lab ")}), {0, Sig("RGB "), Sig("Luv ")}},
      {"platform",
       Q_SetICCPrimaryPlatform,
       40,
       Kept({0, Sig("APPL"), Sig("MSFT"), Sig("SGI "), Sig("SUNW")}),
       {1, Sig("TGNT"), 0xFFFFFFFF}},
      {"flags", Q_SetICCFlags, 44, {{0, 0}, {3, 3}, {4, 0}, {0xFFFFFFFE, 2}}, {}},
      {"manufacturer", Q_SetICCDevManufacturer, 48, any, {}},
      {"model", Q_SetICCDevModel, 52, any, {}},
      {"intent", Q_SetICCRenderingIntent, 64, Kept({0, 1, 2, 3}), {4, 0x10000, 0xFFFFFFFF}},
      {"creator", Q_SetICCCreator, 80, any, {}},
  };
  CheckSetters(record, setters);
  CheckSetters<uint64_t>(record, {{"attributes",
                                   Q_SetICCDeviceAttributes,
                                   56,
                                   {{0, 0}, {15, 15}, {16, 0}, {UINT64_MAX, 15}, {1ull << 32, 0}},
                                   {}}});

  record.header->deviceClass = Sig("link");
  for (const auto& [space, stored] : spaces) {
    EXPECT_EQ(Q_SetICCConnectionSpace(&record, space), SUCCESS);
    EXPECT_EQ(record.header->connectionSpace, stored);
  }
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

TEST_F(ProfileRecord, TagsAreAppendedAndTakenOutAtTheirPlaces) {
  EXPECT_EQ(Set(Sig("desc"), {1, 2}), ERR_ICC_UNKNOWN_TAG_TYPE);
  EXPECT_THAT(Offsets(), ElementsAre(144));
  EXPECT_THAT(Data(), ElementsAre('Q', 'r', 'a', 'w', 0, 0, 0, 0, 1, 2, 0, 0));
  EXPECT_EQ(Set(Sig("Priv"), {}), ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE);
  EXPECT_EQ(Set(Sig("desc"), {3, 4, 5, 6}), ERR_ICC_UNKNOWN_TAG_TYPE);  // a second one, which the first hides
  EXPECT_THAT(Offsets(), ElementsAre(168, 180, 188));
  EXPECT_TRUE(record.tagDataSize == 32 && record.header->profileSize == 132 + 36 + 32);

  IccUnknownTagType tag{};
  EXPECT_EQ(Q_DeleteICCTag(&record, Sig("desc"), &tag), ERR_ICC_UNKNOWN_TAG_TYPE) << "read, therefore kept";
  EXPECT_THAT(std::span(tag.data, tag.dataSize), ElementsAre(1, 2));
  Q_FreeICCTagType(&tag, kRaw);
  EXPECT_EQ(+record.tagCount, 3u);

  std::memset(record.header->profileId, 7, 16);
  EXPECT_EQ(Q_DeleteICCTag(&record, Sig("desc"), nullptr), SUCCESS);  // 10 bytes; 2 of padding stay
  EXPECT_THAT(Offsets(), ElementsAre(158, 166));
  EXPECT_TRUE(record.tagDataSize == 22 && record.header->profileSize == 132 + 24 + 22);
  EXPECT_THAT(Data().first(6), ElementsAre(0, 0, 'Q', 'r', 'a', 'w'));
  EXPECT_THAT(record.header->profileId, Each(0));
  for (const uint32_t signature : {Sig("desc"), Sig("Priv")})
    EXPECT_EQ(Q_DeleteICCTag(&record, signature, nullptr), SUCCESS);
  EXPECT_TRUE(record.tagCount == 0 && record.tagDataSize == 10 && record.header->profileSize == 132 + 12 + 10);
  EXPECT_TRUE(record.tagTable && record.tagData) << "left as they were";
  EXPECT_EQ(Set(Sig("wtpt"), {}), ERR_ICC_UNKNOWN_TAG_TYPE);  // behind what the numbers still tell
  EXPECT_THAT(Offsets(), ElementsAre(144 + 10));
  EXPECT_THAT(Data().first(11), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'Q'));
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

TEST(ProfileTags, AreCopiedInFileOrder) {
  uint8_t bytes[] = {1, 2, 3};
  const IccUnknownTagType source = {0x11223344, 99, bytes, 3};
  IccUnknownTagType copy;
  std::memset(&copy, 0xEE, sizeof copy);
  ASSERT_EQ(Q_CreateICCTagData(&copy, &source, kRaw), ERR_ICC_UNKNOWN_TAG_TYPE);
  EXPECT_EQ(std::memcmp(&copy, "Qraw\0\0\0", 8), 0);
  ASSERT_TRUE(copy.dataSize == 3 && copy.data != bytes);
  EXPECT_THAT(std::span(copy.data, 3), ElementsAre(1, 2, 3));
  Q_FreeICCTagType(&copy, kRaw);
  EXPECT_FALSE(copy.data);
}

}  // namespace
