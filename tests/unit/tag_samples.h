// Hand-written tags of every type, and profiles that hold one.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "IccProfile/profile_record.h"
#include "IccProfile/tag_codecs.h"
#include "IccProfile/tag_table.h"
#include "support/bytes.h"

namespace qv_test {

using qv::AppendTag, qv::BigEndian, qv::DataBegin, qv::kLargestTagStructure, qv::kSuccess, qv::Signature;

// "0A ff" are bytes, 'text' is ASCII, .3 is three zero bytes.
inline Bytes BytesFrom(std::string_view notation) {
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

inline const struct {
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

#undef MATRIX
#undef CURV
#undef PARA

inline std::vector<Sample> Samples() {
  std::vector<Sample> samples;
  for (const auto& [type, payload, fills_tag] : kSamples)
    samples.push_back({Sig(type), BytesFrom(std::string("'") + type + "' 7E7E7E7E " + payload), fills_tag});
  return samples;
}

inline constexpr uint32_t kTag = Signature("targ");

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
inline Bytes SetBytes(const Structure& tag, uint32_t type) {
  Profile profile;
  EXPECT_EQ(profile.Set(tag, type), SUCCESS);
  return profile.Tag();
}
// What a tag becomes when it is read and set.
inline Bytes Rewritten(const Bytes& tag) {
  Structure read;
  const auto type = static_cast<uint32_t>(BigEndian(std::span(tag).first(4)));
  EXPECT_EQ(Profile(tag).Get(read), SUCCESS);
  const Bytes bytes = SetBytes(read, type);
  Q_FreeICCTagType(&read, type);
  return bytes;
}

}  // namespace qv_test
