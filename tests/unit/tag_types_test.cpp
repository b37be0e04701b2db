// Every decoded tag type: its structure in both orders, its bytes, damaged tags, arrays that are not there, and failing
// allocations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>
#include <string>

#include "IccProfile/profile_record.h"
#include "IccProfile/tag_codecs.h"
#include "IccProfile/tag_table.h"
#include "base/memory.h"
#include "base/readable.h"
#include "support/bytes.h"
#include "support/system.h"
#include "unit/fault_sweep.h"

namespace {

using namespace qv;
using namespace qv_test;

// "0A ff" are bytes, 'text' is ASCII, .3 is three zero bytes.
Bytes BytesFrom(std::string_view notation) {
  Bytes bytes;
  for (size_t i = 0; i < notation.size();) {
    const size_t end = std::min(notation.find(notation[i] == '\'' ? '\'' : ' ', i + 1), notation.size());
    const std::string item(notation.substr(i + 1, end - i - 1));
    if (notation[i] == ' ') {
      ++i;
    } else if (notation[i] == '\'') {
      bytes.insert(bytes.end(), item.begin(), item.end());
      i = end + 1;
    } else if (notation[i] == '.') {
      bytes.resize(bytes.size() + std::stoul(item));
      i = end;
    } else {
      bytes.push_back(static_cast<uint8_t>(std::stoul(std::string(notation.substr(i, 2)), nullptr, 16)));
      i += 2;
    }
  }
  return bytes;
}

struct Sample {
  uint32_t type;
  Bytes tag;
  bool fills_tag;
};

// Reserved bytes are 7E.
#define MATRIX " 00010000 00000001 FFFF0000 80000000 00008000 7FFFFFFF 00000002 00000003 00000004 "
#define CURV(entries) " 'curv' 7E7E7E7E " entries
#define PARA(function, parameters) " 'para' 7E7E7E7E " function " 7E7E " parameters

const struct {
  const char *type, *payload;
  bool fills_tag = false;  // its size tells how many elements there are
} kSamples[] = {
    {"XYZ ", "0000F6D6 00010000 0000D32D FFFF8000 00000001 80000000", true},
    {"chrm", "0003 0002 0000A3D7 0000547B 00004CCD 00009999 00002666 80000F5C"},
    {"clro", "00000003 02 00 01"},
    {"clrt", "00000002 'Cyan' .28 8000 4000 FFFE 'a name that fills 32 bytes whole' 0102 0304 0506"},
    {"curv", "00000000"},
    {"curv", "00000003 0000 8001 FFFE"},
    {"data", "00000001 00 FF 80 01 00", true},
    {"data", "00000000 'abc'", true},
    {"dtim", "07EA 000B 0015 0010 0030 003B"},
    {"mAB ", "02 03 7E7E 00000020 0000004C 0000007C 000000B4 000000EC" CURV("00000000") PARA("0000", "00020000")
                 CURV("00000001 01CD .2") MATRIX
     "00000005 00000006 00000007" CURV("00000000") CURV("00000003 0000 8001 FFFE .2")
         PARA("0001", "00026666 00010000 FFFF8000") "02 03 .14 02 7E7E7E 'thirty-six bytes, eighteen elements:'" CURV(
             "00000000") PARA("0000", "0001CCCD")},
    {"mBA ", "03 02 7E7E 00000020 00000000 00000000 00000044 00000068" CURV("00000000") CURV("00000000") CURV(
                 "00000000") "02 02 02 .13 01 7E7E7E 'sixteen elements'" CURV("00000001 0240 .2") CURV("00000000")},
    {"meas", "00000001 00000100 00000200 80000300 00000002 00010000 00000003"},
    {"mft1", "02 03 02 7E" MATRIX "0300 0200 'abcdef' 'twelve nodes' 'ABCDEF'"},
    {"mft2", "02 03 02 7E" MATRIX "0002 0003 'in of 2x' 'twelve nodes of 2 bytes.' 'out, three x three'"},
    {"mluc", "00000002 0000000C 'enUS' 00000006 00000028 'deDE' 00000004 00000030 0041 20AC 0042 .2 D83D DE00"},
    {"ncl2",
     "00C0FFEE 00000002 00000003 'pre' .29 'suffix' .26 'one' .29 0102 0304 0506 0708 090A 0B0C "
     "'two' .29 FFFE FDFC FBFA F9F8 F7F6 F5F4"},
    {"ncl2", "80000000 00000001 00000000 .64 'white' .27 FF00 8000 8001"},
    {"para", "0000 7E7E 00020000"},
    {"para", "0004 7E7E 00000001 00000002 00000003 80000004 00000005 00000006 FFFFFFF9"},
    {"pseq",
     "00000002 'manu' 'modl' 0000000080000001 'fscn' 'mluc' .4 00000001 0000000C 'enUS' 00000004 0000001C 0041 0042 "
     "'desc' .4 00000003 'ab' 00 00000000 00000001 0041 .70 .20 'mluc' .4 00000000 0000000C "
     "'mluc' .4 00000000 0000000C"},
    {"rcs2",
     "0002 0002 00000014 00000050 'StaA' 00000001 00000002 00000001 00000002 00000003 00000004 00000005 80000006 "
     "0001 7E7E 00000100 0002 7E7E 00000200 FFFE 7E7E 80000300 'DN  ' 00000000 00000001 .24 1234 7E7E 00010000"},
    {"sf32", "00010000 FFFF0000 80000001", true},
    {"sig ", "'CRT '"},
    {"text", "'Copyright' 00", true},
    {"uf32", "00010000 FFFF0000", true},
    {"ui08", "00 01 7F 80 FF", true},
    {"ui16", "0001 7F80 FF00", true},
    {"ui32", "00010203 FCFDFEFF", true},
    {"ui64", "0001020304050607 F8F9FAFBFCFDFEFF", true},
    {"view", "00000100 00000200 80000300 00000400 00000500 00000600 00000008"}};

std::vector<Sample> Samples() {
  std::vector<Sample> samples;
  for (const auto& [type, payload, fills_tag] : kSamples)
    samples.push_back({Sig(type), BytesFrom(std::string("'") + type + "' 7E7E7E7E " + payload), fills_tag});
  return samples;
}

constexpr uint32_t kTag = Signature("targ");

struct alignas(8) Structure {
  uint8_t bytes[kLargestTagStructure] = {};

  template <typename T>
  T& As() {
    return *reinterpret_cast<T*>(bytes);
  }
};

class Profile {
 public:
  Profile() {
    EXPECT_EQ(Q_InitICCProfile(&record_, sizeof record_), SUCCESS);
    EXPECT_EQ(Q_InitICCHeader(&record_), SUCCESS);
  }
  explicit Profile(const Bytes& tag) : Profile() { Add(tag); }
  ~Profile() { Q_FreeICCProfile(&record_); }
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  void Add(const Bytes& tag) {
    uint8_t* room = nullptr;
    ASSERT_EQ(AppendTag(&record_, kTag, tag.size(), &room), kSuccess);
    std::ranges::copy(tag, room);
  }
  int32_t Get(Structure& tag) { return Q_GetICCTagData(&record_, &tag, kTag); }
  int32_t Set(const Structure& tag, uint32_t type) { return Q_SetICCTagData(&record_, &tag, kTag, type); }
  Bytes Tag() {  // the first one
    const IccTagEntry entry = record_.tagTable[0];
    const uint8_t* begin = record_.tagData + (entry.offset - DataBegin(record_.tagCount));
    return {begin, begin + entry.size};
  }

 private:
  IccProfileRecord record_;
};

// What a structure becomes when it is set.
Bytes SetBytes(const Structure& tag, uint32_t type) {
  Profile profile;
  EXPECT_EQ(profile.Set(tag, type), SUCCESS);
  return profile.Tag();
}
// What a tag becomes when it is read and set.
Bytes Rewritten(const Bytes& tag) {
  Structure read;
  const auto type = static_cast<uint32_t>(BigEndian(std::span(tag).first(4)));
  EXPECT_EQ(Profile(tag).Get(read), SUCCESS);
  const Bytes bytes = SetBytes(read, type);
  Q_FreeICCTagType(&read, type);
  return bytes;
}

// Less or more of these is written than was read.
bool IsText(uint32_t type) { return type == Signature("text") || type == Signature("data"); }

// Two structures of one tag differ where their arrays are, and do in the lowest bytes of the addresses.
void FindPointers(uint8_t* one, const uint8_t* other, size_t bytes, std::vector<uint8_t*>& found) {
  for (size_t i = 0; i + sizeof(void*) <= bytes; i += 2) {
    uintptr_t block, twin;
    std::memcpy(&block, one + i, sizeof block);
    std::memcpy(&twin, other + i, sizeof twin);
    if (std::memcmp(one + i, other + i, 2) == 0 || !IsReadable(Address(block - 16), 16)) continue;
    found.push_back(one + i);
    FindPointers(reinterpret_cast<uint8_t*>(block), Address(twin), BytesOf(Address(block)), found);
    i += sizeof block - 2;
  }
}

struct EveryTagType : testing::TestWithParam<Sample> {
  void SetUp() override {
    for (Structure* tag : {&host, &twin}) ASSERT_EQ(Profile(sample().tag).Get(*tag), SUCCESS);
  }
  void TearDown() override {
    for (Structure* tag : {&host, &twin}) Q_FreeICCTagType(tag, sample().type);
    EXPECT_EQ(Ledger().blocks, blocks_before);
  }
  const Sample& sample() { return GetParam(); }
  // Where the host order's structure, and what it points to, has its arrays.
  std::vector<uint8_t*> Pointers() {
    std::vector<uint8_t*> found;
    FindPointers(host.bytes, twin.bytes, sizeof host.bytes, found);
    return found;
  }

  Structure host, twin;
  const size_t blocks_before = Ledger().blocks;
};

// What the structures hold is shown by qvclr's tests, which read them.
TEST_P(EveryTagType, IsWrittenAsItWasRead) {
  Bytes written = sample().tag;
  std::ranges::replace(written, uint8_t{0x7E}, uint8_t{0});
  if (!IsText(sample().type) || written[11] == 1) {
    EXPECT_EQ(SetBytes(host, sample().type), written);
    EXPECT_EQ(Rewritten(written), written);
  }
  const std::vector<uint8_t*> pointers = Pointers();
  const std::vector<uint32_t> without_arrays = {Sig("dtim"), Sig("meas"), Sig("sig "), Sig("view")};
  EXPECT_EQ(pointers.empty(), std::ranges::count(without_arrays, sample().type) != 0);
  Q_FreeICCTagType(&host, sample().type);
  for (const uint8_t* pointer : pointers) {
    if (pointer >= host.bytes && pointer < std::end(host.bytes)) EXPECT_EQ(BigEndian({pointer, 8}), 0u);
  }
}

// The bytes end at a page that nobody may touch, those that are read and those that are written. Whatever can be read
// can be written, and comes back as it was written.
Status ReadAndRewrite(const Sample& sample, const Bytes& bytes) {
  GuardedBuffer area(bytes);
  Structure host, file, again;
  const TagCodec& codec = *FindCodec(sample.type);
  const Status status = DecodeTag(codec, ByteReader(area.bytes()), &host);
  if (!Ok(status)) return status;
  EXPECT_EQ(ConstructTag(codec, sample.type, &host, &file), kSuccess);
  GuardedBuffer room(EncodedBytes(codec, &file));
  EncodeTag(codec, &file, room.data());
  for (Structure* tag : {&host, &file}) ReleaseTag(codec, tag);
  const Bytes written(room.data(), room.data() + room.size());
  EXPECT_EQ(Profile(written).Get(again), SUCCESS);
  if (!IsText(sample.type)) EXPECT_EQ(SetBytes(again, sample.type), written);
  ReleaseTag(codec, &again);
  return status;
}

TEST_P(EveryTagType, EndsWithTheBytes) {
  const Bytes whole = Rewritten(sample().tag);
  for (size_t length = 0; length < sample().tag.size(); ++length) {
    SCOPED_TRACE(length);
    const Status status = ReadAndRewrite(sample(), {sample().tag.begin(), sample().tag.begin() + length});
    const size_t least = sample().type == Signature("data") ? 12 : 8;
    EXPECT_EQ(status, sample().fills_tag && length >= least ? kSuccess : kInvalidProfile);
    // Of a tag that is too short for its counts, the rest is taken from what follows.
    Structure read;
    const TagCodec& codec = *FindCodec(sample().type);
    if (sample().fills_tag) continue;
    ASSERT_EQ(DecodeTag(codec, ByteReader(sample().tag, length), &read), kSuccess);
    EXPECT_EQ(SetBytes(read, sample().type), whole);
    ReleaseTag(codec, &read);
  }
}

TEST_P(EveryTagType, TakesOrRefusesAnyByte) {
  for (size_t i = 4; i < sample().tag.size(); ++i) {
    for (const uint8_t value : BytesFrom("00 01 7F FF")) {
      SCOPED_TRACE(testing::Message() << int{value} << " at " << i);
      Bytes bytes = sample().tag;
      bytes[i] = value;
      const Status status = ReadAndRewrite(sample(), bytes);
      EXPECT_TRUE(status == kSuccess || status == kInvalidProfile || status == kIccTagNotFound) << int32_t(status);
    }
  }
}

TEST_P(EveryTagType, NeedsItsArrays) {
  GuardedBuffer closed(PageSize());
  Protect(closed.data(), 1, Protection::kNone);
  const bool has_parts = sample().type == Signature("mAB ") || sample().type == Signature("mBA ");
  for (uint8_t* place : Pointers()) {
    for (const uint8_t* array : {static_cast<const uint8_t*>(nullptr), static_cast<const uint8_t*>(closed.data())}) {
      SCOPED_TRACE(testing::Message() << (array ? "closed" : "null") << " at " << place - host.bytes);
      uint8_t* kept;
      std::memcpy(&kept, place, sizeof kept);
      std::memcpy(place, &array, sizeof array);
      const bool optional = has_parts && !array && place >= host.bytes && place < std::end(host.bytes);
      const bool empty = array && BytesOf(kept) == 0;  // nothing of it is looked at
      Profile profile;
      Structure none;
      const size_t blocks = Ledger().blocks;
      if (optional || empty) {
        EXPECT_EQ(profile.Set(host, sample().type), SUCCESS);
        EXPECT_EQ(Rewritten(profile.Tag()), profile.Tag());
      } else {
        EXPECT_EQ(profile.Set(host, sample().type), ERR_INV_PARAMETER);
        EXPECT_EQ(Q_CreateICCTagData(&none, &host, sample().type), ERR_INV_PARAMETER);
        EXPECT_EQ(Ledger().blocks, blocks);
      }
      std::memcpy(place, &kept, sizeof kept);
    }
  }
  Protect(closed.data(), 1, Protection::kReadWrite);
}

TEST_P(EveryTagType, LeavesNothingWithoutMemory) {
  Structure made;
  const std::function<int32_t(Profile&)> calls[] = {
      [&](Profile& profile) { return profile.Get(made); },
      [&](Profile&) { return Q_CreateICCTagData(&made, &host, sample().type); },
      [&](Profile& profile) { return profile.Set(host, sample().type); }};
  for (const auto& call : calls) {
    const int faults = SweepFaults(allocation_faults, [&](Fault& fault) {
      Profile profile(sample().tag);
      made = {};
      const int32_t status = fault.During([&] { return call(profile); });
      EXPECT_EQ(status, fault.struck ? ERR_FAILURE : SUCCESS);
      Q_FreeICCTagType(&made, sample().type);
    });
    EXPECT_TRUE(faults >= 0 && faults < 100) << faults;
  }
}

INSTANTIATE_TEST_SUITE_P(Samples, EveryTagType, testing::ValuesIn(Samples()), [](const auto& of) {
  const std::string type(of.param.tag.begin(), of.param.tag.begin() + 4);
  return std::to_string(of.index) + "_" + type.substr(0, type.find(' '));
});

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
