// What single types of tags are beside their bytes: limits, texts, arrays and signatures.
#include <cstring>

#include "base/memory.h"
#include "support/system.h"
#include "unit/tag_samples.h"

namespace {

using namespace qv;
using namespace qv_test;

TEST(TagTypes, CompleteShortSignatures) {
  const std::pair<uint32_t, const char*> kCases[] = {
      {0, "00202020"},        {0xFF, "FF202020"},      {0x100, "01002020"},
      {0x6162, "'ab  '"},     {0xFFFF, "FFFF2020"},    {0x10000, "01000020"},
      {0xFFFFFF, "FFFFFF20"}, {0x1000000, "01000000"}, {0x20202020, "'    '"}};
  for (const auto& [given, set] : kCases) {
    Structure tag;
    tag.As<IccSignatureTagType>().signatureValue = given;
    EXPECT_EQ(SetBytes(tag, Signature("sig ")), BytesFrom(std::string("'sig ' .4 ") + set)) << given;
  }
}

// Of u units before the first zero unit, u + 1 bytes; when they are written, again.
Bytes TextModel(Bytes text) {
  for (int pass = 0; pass < 2; ++pass) {
    text.resize(text.size() + 4 + text.size() % 2);
    size_t units = 0;
    while (text[2 * units] || text[2 * units + 1]) ++units;
    text.resize(units + 1);
  }
  return text;
}

TEST(TagTypes, TextShrinksAndAsciiGrows) {
  for (const char* text : {"", "00", "'a'", "'a' 00", "'ab' 00", "'abc' 00", "'abcdefgh' 00", "'abcdefghi' 00", "'ab'",
                           "'a' 00 'bc' 00", "'a' 00 00 'b'", "00 'a' 00 'b'", "00 00 'ab'", "'a' 0000 'bcd' 00"}) {
    Bytes tag = BytesFrom("'text' .4"), model = tag;
    const Bytes payload = BytesFrom(text), shrunk = TextModel(payload);
    tag.insert(tag.end(), payload.begin(), payload.end());
    model.insert(model.end(), shrunk.begin(), shrunk.end());
    EXPECT_EQ(Rewritten(tag), model) << text;
  }
  // The byte that is taken along is padding, the next tag's, or none.
  Bytes tag = BytesFrom("'data' .8 'abcd'");
  Profile between(tag);
  between.Add(BytesFrom("'next' .4"));
  Structure read;
  EXPECT_EQ(between.Get(read), SUCCESS);
  EXPECT_EQ(read.As<IccDataTagType>().dataLength, 4u);
  EXPECT_EQ(SetBytes(read, Signature("data")), BytesFrom("'data' .8 'abcdn'"));
  Q_FreeICCTagType(&read, Signature("data"));
  for (int times = 0; times < 4; ++times) {
    Bytes grown = tag;
    grown.push_back(0);
    ASSERT_EQ(tag = Rewritten(tag), grown);
  }
}

TEST(TagTypes, HaveCountsWithLimits) {
  const struct {
    const char* tag;
    int32_t status;
  } kTags[] = {{"'para' .4 0005 0000 .32", ERR_ICC_TAG_NOT_FOUND},
               {"'para' .4 FFFF 0000 .32", ERR_ICC_TAG_NOT_FOUND},
               {"'curv' .4 00000003 0001 0002", ERR_ICC_INVALID_PROFILE},
               {"'curv' .4 80000000 0001", ERR_ICC_INVALID_PROFILE},
               {"'mft2' .4 03 03 00 00 .36 0000 0000", SUCCESS},                  // 0 ^ 3: no nodes
               {"'mft2' .4 00 03 00 00 .36 0000 0000 .6", SUCCESS},               // 0 ^ 0: one node
               {"'mft2' .4 FF 00 01 00 .36 0000 0000", SUCCESS},                  // 1 ^ 255
               {"'mft1' .4 04 01 FF 00 .36 0000 0000", ERR_ICC_INVALID_PROFILE},  // within 32 bits, not there
               {"'mft1' .4 05 01 FF 00 .36 0000 0000", ERR_ICC_INVALID_PROFILE},
               {"'mft1' .4 20 00 02 00 .36 0000 0000", ERR_ICC_INVALID_PROFILE},      // 2 ^ 32, without outputs
               {"'mft2' .4 10 01 10 00 .36 0000 0000 .64", ERR_ICC_INVALID_PROFILE},  // 2 ^ 64
               {"'mAB ' .4 01 01 .14 00000020 .4 01 .15 01 .3 55", SUCCESS},          // bytes, words, and no others
               {"'mAB ' .4 01 01 .14 00000020 .4 01 .15 02 .3 5555", SUCCESS},
               {"'mAB ' .4 01 01 .14 00000020 .4 01 .15 03 .3 555555", ERR_ICC_INVALID_PROFILE},
               {"'mAB ' .4 01 01 .14 00000020 .4 01 .15 00 .3 55", ERR_ICC_INVALID_PROFILE},
               {"'data' .4 00000002 'ab'", SUCCESS},  // not ASCII
               {"'mluc' .4 00000001 0000000D .16", ERR_ICC_INVALID_PROFILE},
               {"'pseq' .4 00000001 .20 'desc' .4 FFFFFFFF .78 'mluc' .4 00000000 0000000C", ERR_ICC_INVALID_PROFILE},
               {"'pseq' .4 00000001 .20 'text' .200", ERR_ICC_INVALID_PROFILE}};
  for (const auto& [notation, status] : kTags) {
    const Bytes tag = BytesFrom(notation);
    const size_t blocks = Ledger().blocks;
    Structure read;
    EXPECT_EQ(Profile(tag).Get(read), status) << notation;
    if (status == SUCCESS) {
      EXPECT_EQ(Rewritten(tag), tag) << notation;
      Q_FreeICCTagType(&read, static_cast<uint32_t>(BigEndian(std::span(tag).first(4))));
    }
    EXPECT_EQ(Ledger().blocks, blocks) << notation;
  }
  Bytes sharing = BytesFrom("'mluc' .4 00001770 0000000C");  // 6000 texts in one place
  for (int i = 0; i < 6000; ++i) std::ranges::copy(BytesFrom(".4 00002EE0 00011950"), std::back_inserter(sharing));
  sharing.resize(sharing.size() + 0x2EE0);
  Structure shared;
  EXPECT_EQ(Profile(sharing).Get(shared), ERR_ICC_INVALID_PROFILE);
  Structure unknown, copy;
  uint32_t parameters[8] = {};
  unknown.As<IccParametricCurveTagType>().functionType = 5;
  unknown.As<IccParametricCurveTagType>().parameters = parameters;
  EXPECT_EQ(Q_CreateICCTagData(&copy, &unknown, Signature("para")), ERR_INV_PARAMETER);
  EXPECT_EQ(Profile().Set(unknown, Signature("para")), ERR_INV_PARAMETER);
  Structure huge;  // 255 ^ 5 nodes are told before an array is looked at
  huge.As<IccLutTagType>() = {0, 0, 5, 1, 255};
  EXPECT_EQ(Profile().Set(huge, Signature("mft1")), ERR_ICC_INVALID_PROFILE);
  EXPECT_EQ(Profile().Set(huge, Signature("mft2")), ERR_ICC_INVALID_PROFILE);
  const int kParameters[] = {1, 3, 4, 5, 7, 0, 0};
  for (uint32_t i = 0; i < 7; ++i) EXPECT_EQ(Q_GetParametricCurveNumberOfParameters(i), kParameters[i]);
  for (const uint32_t i : {0x10000u, 0x300u, ~0u}) EXPECT_EQ(Q_GetParametricCurveNumberOfParameters(i), 0);
}

TEST(TagTypes, ReadNoArrayBeyondReadableMemory) {
  for (const size_t bytes : {1, 2, 3, 4, 5}) {  // less than what the structures tell, up to a closed page
    GuardedBuffer memory(bytes);
    std::ranges::fill(memory.bytes(), uint8_t{'x'});
    Structure text, curve, data;
    text.As<IccTextTagType>().text = reinterpret_cast<char*>(memory.data());
    curve.As<IccCurveTagType>().entryCount = 3;
    std::memcpy(curve.bytes + offsetof(IccCurveTagType, entries), text.bytes + 8, sizeof(void*));
    data.As<IccDataTagType>() = {0, 0, 0, memory.data(), static_cast<uint32_t>(bytes)};
    EXPECT_EQ(Profile().Set(text, Signature("text")), ERR_INV_PARAMETER);
    EXPECT_EQ(Profile().Set(curve, Signature("curv")), ERR_INV_PARAMETER);
    EXPECT_EQ(Profile().Set(data, Signature("data")), ERR_INV_PARAMETER) << "the byte behind ASCII";
    memory.data()[bytes - 1] = 0;
    if (bytes > 1) memory.data()[bytes - 2] = 0;
    if (bytes % 2 == 0) EXPECT_EQ(Profile().Set(text, Signature("text")), SUCCESS);
    data.As<IccDataTagType>().dataFlag = 1;
    EXPECT_EQ(Profile().Set(data, Signature("data")), SUCCESS);
  }
}

// What the buffer functions copy from a structure, up to `bytes`; behind it nothing is written.
template <typename T>
Bytes Copied(int32_t (*convert)(void*, const T*), const T& structure, size_t bytes) {
  GuardedBuffer buffer(bytes);
  std::ranges::fill(buffer.bytes(), uint8_t{0xCC});
  EXPECT_EQ(convert(buffer.data(), &structure), SUCCESS);
  EXPECT_EQ(convert(nullptr, &structure), ERR_INV_PARAMETER);
  EXPECT_EQ(convert(buffer.data(), nullptr), ERR_INV_PARAMETER);
  return {buffer.data(), buffer.data() + bytes};
}

TEST(TagTypes, AreCopiedAsTheyStand) {
  uint16_t entries[256];
  for (uint32_t i = 0; i < 256; ++i) entries[i] = static_cast<uint16_t>(i * 256 + 255 - i);
  Structure host, file;
  host.As<IccCurveTagType>() = {Signature("curv"), 0, 256, entries};
  ASSERT_EQ(Q_CreateICCTagData(&file, &host, Signature("curv")), SUCCESS);
  EXPECT_EQ(Copied(Q_ConvertCurveTypeToBuffer, file.As<IccCurveTagType>(), 524), SetBytes(host, Signature("curv")));
  const Bytes copied = Copied(Q_ConvertCurveTypeToBuffer, host.As<IccCurveTagType>(), 524);
  EXPECT_EQ(std::memcmp(copied.data(), host.bytes, 12), 0);
  EXPECT_EQ(std::memcmp(copied.data() + 12, entries, 512), 0);
  Q_FreeICCTagType(&file, Signature("curv"));

  uint32_t parameters[] = {1, 2, 3, 4, 5};
  host.As<IccParametricCurveTagType>() = {Signature("para"), 0, 3, 0, parameters};
  ASSERT_EQ(Q_CreateICCTagData(&file, &host, Signature("para")), SUCCESS);
  EXPECT_EQ(Copied(Q_ConvertParametricCurveTypeToBuffer, file.As<IccParametricCurveTagType>(), 12),
            BytesFrom("'para' .4 0003 0000"));
  const Bytes five = Copied(Q_ConvertParametricCurveTypeToBuffer, host.As<IccParametricCurveTagType>(), 32);
  EXPECT_EQ(std::memcmp(five.data(), host.bytes, 12), 0);
  EXPECT_EQ(std::memcmp(five.data() + 12, parameters, 20), 0);
  Q_FreeICCTagType(&file, Signature("para"));

  for (const Sample& sample : Samples()) {  // the CLUT's place in a tag is its fourth offset
    if (sample.type != Signature("mAB ") && sample.type != Signature("mBA ")) continue;
    ASSERT_EQ(Profile(sample.tag).Get(host), SUCCESS);
    ASSERT_EQ(Q_CreateICCTagData(&file, &host, sample.type), SUCCESS);
    const IccClut& clut = *file.As<IccLutAToBTagType>().clut;
    const size_t bytes = 20 + clut.precision * clut.elementCount;
    const Bytes tag = SetBytes(host, sample.type);
    const size_t at = BigEndian(std::span(tag).subspan(24, 4));
    EXPECT_EQ(Copied(Q_ConvertCLUTToBuffer, clut, bytes), Bytes(&tag[at], &tag[at] + bytes));
    for (Structure* used : {&host, &file}) Q_FreeICCTagType(used, sample.type);
  }
}

}  // namespace
