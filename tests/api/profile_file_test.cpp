// Profiles as bytes and as files: parsed, generated, read by the colour engine, and cut short.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "Qvclr15x.h"
#include "support/signature.h"

namespace {

using Bytes = std::vector<uint8_t>;
using qv_test::Sig;
using testing::Each;

Bytes ReadAll(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct ProfileFile : testing::Test {
  ProfileFile() {
    Q_InitICCProfile(&record, sizeof record);
    std::filesystem::remove(path);
  }
  ~ProfileFile() override {
    Q_FreeICCProfile(&record);
    std::filesystem::remove(path);
  }
  int32_t FillFromFileOf(const Bytes& bytes) {
    Q_FreeICCProfile(&record);
    Q_InitICCProfile(&record, sizeof record);
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    return Q_FillICCProfileFromICCFile(path.string<QWChar>().c_str(), &record);
  }
  int32_t Fill(const Bytes& bytes) {
    Q_FreeICCProfile(&record);
    Q_InitICCProfile(&record, sizeof record);
    return Q_FillICCProfileStructure(&record, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  Bytes Image() const { return {record.profileBytes, record.profileBytes + record.profileByteSize}; }

  const std::filesystem::path path = std::filesystem::temp_directory_path() / "qv_profile_file.icc";
  const Bytes srgb = ReadAll(QV_TEST_DATA "/srgb_v4.icc");
  IccProfileRecord record;
};

TEST_F(ProfileFile, IsReadAndWrittenByteForByte) {
  ASSERT_EQ(srgb.size(), 480u);
  for (const bool by_file : {false, true}) {
    ASSERT_EQ(by_file ? FillFromFileOf(srgb) : Fill(srgb), SUCCESS);
    EXPECT_TRUE(record.tagCount == 10 && record.tagDataSize == 480 - 132 - 120 && record.header->model == Sig("ctrl"));
    EXPECT_TRUE(record.header->dateTime.year == 2018 && record.header->dateTime.seconds == 29);
    EXPECT_EQ(Q_GetICCTagTypeSig(&record, Sig("chad")), Sig("sf32"));
    record.header->reserved[27] = 1;  // is never written
    std::fill_n(record.profileBytes, 480, uint8_t{0xEE});
    ASSERT_EQ(Q_GenerateICCPointer(&record), SUCCESS);
    EXPECT_EQ(Image(), srgb);
    ASSERT_EQ(Q_GenerateICCFileA(&record, path.string().c_str()), SUCCESS);
    EXPECT_EQ(ReadAll(path), srgb);
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
  const std::string folder = path.parent_path().string(), missing = (path / "no" / "file").string();
  const std::string endless(300, 'a');
  ASSERT_EQ(Fill(srgb), SUCCESS);
  IccProfileRecord other{};
  for (const std::string& name : {folder, missing, std::string()}) {
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
  EXPECT_EQ(ReadAll(path), srgb);
  ++record.header->profileSize;
  EXPECT_EQ(Q_GenerateICCPointer(&record), ERR_ICC_INVALID_PROFILE);
  EXPECT_EQ(+record.profileByteSize, 480u) << "of its parts";
  EXPECT_EQ(Image(), srgb) << "the old bytes";
  record.profileByteSize = 100;
  EXPECT_EQ(Q_GenerateICCFile(&record, name.c_str()), SUCCESS) << "as it stands";
  EXPECT_EQ(ReadAll(path), Bytes(srgb.begin(), srgb.begin() + 100));
}

TEST_F(ProfileFile, BuiltFromNothingIsAProfileToTheColourEngine) {
  std::vector<uint32_t> d50 = {0xF6D6, 0x10000, 0xD32D}, red = {0x6FA0, 0x38F2, 0x038F},
                        green = {0x6295, 0xB787, 0x18D9}, blue = {0x24A1, 0x0F87, 0xB6C5}, gamma = {0x00020000};
  std::vector<uint32_t> chad = {0x10C42, 0x05DE, 0xFFFFF325, 0x0793, 0xFD90, 0xFFFFFB9C, 0xFFFFFDA1, 0x03DA, 0xC06E};
  uint16_t fixed_gamma = 0x0200;
  const auto numbers = [](std::vector<uint32_t>& values, size_t group) {
    return IccNumberArrayTagType{0, 0, values.data(), static_cast<uint32_t>(values.size() / group)};
  };
  ASSERT_EQ(Q_InitICCHeader(&record), SUCCESS);
  const IccDateTime date = {2024, 2, 29, 23, 59, 58};
  for (const int32_t status : {Q_SetICCDeviceClass(&record, Sig("mntr")), Q_SetICCColorSpace(&record, Sig("RGB ")),
                               Q_SetICCConnectionSpace(&record, Sig("XYZ ")), Q_SetICCDateTime(&record, &date),
                               Q_SetICCPrimaryPlatform(&record, Sig("SUNW")), Q_SetICCFlags(&record, 1),
                               Q_SetICCDeviceAttributes(&record, 2), Q_SetICCRenderingIntent(&record, 1)}) {
    ASSERT_EQ(status, SUCCESS);
  }
  const auto set = [&](const char(&signature)[5], const char(&type)[5], const auto& tag) {
    ASSERT_EQ(Q_SetICCTagData(&record, &tag, Sig(signature), Sig(type)), SUCCESS) << signature;
  };
  for (const auto& [signature, text] : {std::pair{"desc", u"Built"}, std::pair{"cprt", u"Nobody's"}}) {
    std::u16string copy = text;
    IccLocalizedText english = {0x656E, 0x5553, static_cast<uint32_t>(2 * copy.size()),
                                reinterpret_cast<uint16_t*>(copy.data())};
    const IccMultiLocalizedTagType tag = {0, 0, 1, &english};
    ASSERT_EQ(Q_SetICCTagData(&record, &tag, Sig(signature), Sig("mluc")), SUCCESS);
  }
  set("wtpt", "XYZ ", numbers(d50, 3));
  set("chad", "sf32", numbers(chad, 1));
  set("rXYZ", "XYZ ", numbers(red, 3));
  set("gXYZ", "XYZ ", numbers(green, 3));
  set("bXYZ", "XYZ ", numbers(blue, 3));
  set("rTRC", "para", IccParametricCurveTagType{0, 0, 0, 0, gamma.data()});
  set("gTRC", "para", IccParametricCurveTagType{0, 0, 0, 0, gamma.data()});
  set("bTRC", "curv", IccCurveTagType{0, 0, 1, &fixed_gamma});
  ASSERT_EQ(Q_GenerateICCPointer(&record), SUCCESS);
  ASSERT_EQ(Q_GenerateICCFile(&record, path.string<QWChar>().c_str()), SUCCESS);
  const Bytes image = Image();
  EXPECT_EQ(ReadAll(path), image);

  cmsHPROFILE profile = cmsOpenProfileFromMem(image.data(), static_cast<cmsUInt32Number>(image.size()));
  ASSERT_TRUE(profile);
  EXPECT_EQ(cmsGetDeviceClass(profile), cmsSigDisplayClass);
  EXPECT_EQ(cmsGetHeaderRenderingIntent(profile), 1u);
  EXPECT_EQ(cmsGetTagCount(profile), 10);
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(cmsReadTag(profile, cmsGetTagSignature(profile, static_cast<cmsUInt32Number>(i)))) << i;
  }
  char text[20] = {};
  cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", text, sizeof text);
  EXPECT_STREQ(text, "Built");
  const cmsHPROFILE xyz = cmsCreateXYZProfile();
  const cmsHTRANSFORM transform =
      cmsCreateTransform(profile, TYPE_RGB_DBL, xyz, TYPE_XYZ_DBL, INTENT_RELATIVE_COLORIMETRIC, 0);
  ASSERT_TRUE(transform);
  const double half[3] = {0.5, 0.5, 0.5};
  cmsCIEXYZ quarter{};
  cmsDoTransform(transform, half, &quarter, 1);
  EXPECT_NEAR(quarter.Y, 0.25, 1e-4) << "the white point through a gamma of 2";
  EXPECT_NEAR(quarter.X, 0.25 * 0.9642, 1e-4);
  cmsDeleteTransform(transform);
  cmsCloseProfile(xyz);
  cmsCloseProfile(profile);
}

}  // namespace
