#include "unit/tag_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string>

#include "IccProfile/profile_record.h"

namespace qv_test {

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

namespace {

const uint8_t* Follow(const uint8_t* place) {
  const uint8_t* array;
  std::memcpy(&array, place, sizeof array);
  return array;
}

}  // namespace

void Fields::Compare(const uint8_t* host, const uint8_t* file, size_t width, size_t count) {
  ASSERT_TRUE(host && file);
  ASSERT_LE(width * count, Rest());
  for (size_t i = 0; i < count; ++i, position_ += width, host += width, file += width) {
    const Bytes in_tag(&tag_[position_], &tag_[position_] + width);
    EXPECT_EQ(Bytes(std::reverse_iterator(host + width), std::reverse_iterator(host)), in_tag) << "at " << position_;
    EXPECT_EQ(Bytes(file, file + width), in_tag) << "file order, at " << position_;
  }
}

uint64_t Fields::Number(size_t width, size_t count) {
  Compare(host_, file_, width, count);
  Advance(width * count);
  uint64_t number = 0;
  std::memcpy(&number, host_ - width, width);
  return number;
}

uint64_t Fields::Ahead(size_t width, size_t distance) const {
  uint64_t number = 0;
  std::memcpy(&number, host_ + distance, width);
  return number;
}

void Fields::Array(size_t width, size_t count) {
  pointers_.push_back(host_);
  Compare(Follow(host_), Follow(file_), width, count);
  Advance(sizeof(void*));
}

void Fields::Records(size_t count, size_t record_bytes, const std::function<void()>& describe,
                     const std::function<void()>& describe_parts) {
  const uint8_t *const host = host_, *const file = file_;
  pointers_.push_back(host);
  for (const auto& each : {describe, describe_parts}) {
    for (size_t i = 0; each && i < count; ++i) {
      host_ = Follow(host) + i * record_bytes;
      file_ = Follow(file) + i * record_bytes;
      each();
    }
  }
  host_ = host + sizeof(void*);
  file_ = file + sizeof(void*);
}

void Fields::Reserved(size_t bytes) {
  const Bytes zeros(bytes), in_tag(&tag_[position_], &tag_[position_] + bytes);
  EXPECT_EQ(Bytes(host_, host_ + bytes), Bytes(in_tag.rbegin(), in_tag.rend())) << "at " << position_;
  EXPECT_EQ(Bytes(file_, file_ + bytes), zeros) << "at " << position_;
  std::ranges::copy(zeros, &tag_[position_]);
  position_ += bytes;
  Advance(bytes);
}

void Fields::NotInTag(uint32_t number, bool copy_in_host_order) {
  Bytes copied(file_, file_ + sizeof number);
  if (copy_in_host_order) std::ranges::reverse(copied);
  EXPECT_EQ(Ahead(sizeof number), number);
  EXPECT_EQ(qv::BigEndian(copied), number);
  Advance(sizeof number);
}

bool Fields::SkipNull() {
  const bool null = !Follow(host_);
  EXPECT_EQ(!Follow(file_), null);
  if (null) Advance(sizeof(void*));
  return null;
}

namespace {

using F = Fields;

template <size_t kWidth, size_t kGroup = 1>
void NumberArray(F& f) {
  const size_t count = f.Rest() / kWidth / kGroup;
  f.Array(kWidth, count * kGroup);
  f.NotInTag(static_cast<uint32_t>(count));
}

template <size_t kWidth>
void NumbersOnly(F& f) {
  f.Number(kWidth, f.Rest() / kWidth);
}

template <size_t kWidth>
void CountedArray(F& f) {
  f.Array(kWidth, f.Number(4));
}

void NameAndPcs(F& f) {
  f.Number(1, 32);
  f.Number(2, 3);
}

void BinaryData(F& f) {
  f.Number(4);
  NumberArray<1>(f);
}

void Parametric(F& f) {
  constexpr size_t kParameters[] = {1, 3, 4, 5, 7};
  const uint64_t function = f.Number(2);
  f.Reserved(2);
  f.Array(4, kParameters[function]);
}

template <size_t kWidth>
void Lut(F& f) {
  const uint64_t in = f.Number(1), out = f.Number(1), grid = f.Number(1);
  f.Reserved(1);
  f.Number(4, 9);
  const uint64_t in_entries = f.Ahead(2), out_entries = f.Ahead(2, 2);
  f.Number(kWidth, 4 / kWidth);  // little-endian in 'mft1'
  f.Array(kWidth, in * in_entries);
  f.Array(kWidth, (in == 2 ? grid * grid : grid) * out);
  f.Array(kWidth, out * out_entries);
}

// The parts of the samples stand in the order of their offsets, and one side has three channels.
void LutWithParts(F& f) {
  const auto curves = [&](size_t count) {
    if (f.SkipNull()) return;
    f.Records(count, sizeof(IccCurveElement), [&] {
      const bool parametric = f.Number(4) == qv::Signature("para");
      f.Reserved(4);
      parametric ? Parametric(f) : CountedArray<2>(f);
      f.Align();
    });
  };
  const uint64_t in = f.Number(1), out = f.Number(1);
  f.Reserved(2);
  f.Skip(20);
  curves(3);
  if (!f.SkipNull()) f.Array(4, 12);
  curves(3);
  f.Records(1, sizeof(IccClut), [&] {
    uint64_t count = out;
    for (size_t i = 0; i < in; ++i) count *= f.Ahead(1, i);
    f.Number(1, 16);
    const uint64_t precision = f.Number(1);
    f.Reserved(3);
    f.NotInTag(static_cast<uint32_t>(count), true);
    f.Array(precision, count);
  });
  curves(2);
}

void MultiLocalized(F& f) {
  const uint64_t count = f.Number(4);
  f.Skip(4);
  const auto record = [&] {
    f.Number(2, 2);
    f.Number(4);
    f.Skip(4);
  };
  f.Records(count, sizeof(IccLocalizedText), record, [&] {
    constexpr size_t kText = offsetof(IccLocalizedText, text);
    f.Align();
    const uint64_t units = f.Ahead(4, kText - 4) / 2;
    f.Advance(kText);
    f.Array(2, units);
  });
}

void NamedColors(F& f) {
  f.Number(4);
  const uint64_t colors = f.Number(4), channels = f.Number(4);
  f.Number(1, 64);
  f.Records(colors, sizeof(IccNamedColor), [&] {
    NameAndPcs(f);
    f.Array(2, channels);
  });
}

void ProfileSequence(F& f) {
  const uint64_t count = f.Number(4);
  f.Records(count, sizeof(IccProfileDescription), [&] {
    f.Number(4, 2);
    f.Number(8);
    f.Number(4);
    for (int text = 0; text < 2; ++text) {  // of the manufacturer, and of the model
      const auto bytes = static_cast<uint32_t>(f.Ahead(4, sizeof(void*)));
      f.Array(1, bytes);
      f.NotInTag(bytes);
    }
  });
}

void ResponseCurves(F& f) {
  const uint64_t channels = f.Number(2), units = f.Number(2);
  f.Skip(4 * units);
  size_t responses = 3;  // of the sample's first unit; its second has one
  f.Records(units, sizeof(IccResponseCurves), [&] {
    f.Number(4);
    f.Array(4, channels);
    f.Array(4, 3 * channels);
    f.Records(responses, sizeof(IccResponse), [&] {
      f.Number(2);
      f.Reserved(2);
      f.Number(4);
    });
    responses = 1;
  });
}

// Reserved bytes are 7E.
#define MATRIX " 00010000 00000001 FFFF0000 80000000 00008000 7FFFFFFF 00000002 00000003 00000004 "
#define CURV(entries) " 'curv' 7E7E7E7E " entries
#define PARA(function, parameters) " 'para' 7E7E7E7E " function " 7E7E " parameters

const struct {
  const char *type, *payload;
  void (*describe)(F& fields);
  bool fills_tag = false;
} kTags[] = {
    {"XYZ ", "0000F6D6 00010000 0000D32D FFFF8000 00000001 80000000", NumberArray<4, 3>, true},
    {"chrm", "0003 0002 0000A3D7 0000547B 00004CCD 00009999 00002666 80000F5C",
     [](F& f) {
       const uint64_t channels = f.Number(2);
       f.Number(2);
       f.Array(4, 2 * channels);
     }},
    {"clro", "00000003 02 00 01", CountedArray<1>},
    {"clrt", "00000002 'Cyan' .28 8000 4000 FFFE 'a name that fills 32 bytes whole' 0102 0304 0506",
     [](F& f) { f.Records(f.Number(4), sizeof(IccColorant), [&] { NameAndPcs(f); }); }},
    {"curv", "00000000", CountedArray<2>},
    {"curv", "00000003 0000 8001 FFFE", CountedArray<2>},
    {"data", "00000001 00 FF 80 01 00", BinaryData, true},
    {"data", "00000000 'abc'", nullptr, true},
    {"dtim", "07EA 000B 0015 0010 0030 003B", NumbersOnly<2>},
    {"mAB ",
     "02 03 7E7E 00000020 0000004C 0000007C 000000B4 000000EC" CURV("00000000") PARA("0000", "00020000") CURV(
         "00000001 01CD .2") MATRIX "00000005 00000006 00000007" CURV("00000000") CURV("00000003 0000 8001 FFFE .2")
         PARA("0001", "00026666 00010000 FFFF8000") "02 03 .14 02 7E7E7E 'thirty-six bytes, eighteen elements:'" CURV(
             "00000000") PARA("0000", "0001CCCD"),
     LutWithParts},
    {"mBA ",
     "03 02 7E7E 00000020 00000000 00000000 00000044 00000068" CURV("00000000") CURV("00000000")
         CURV("00000000") "02 02 02 .13 01 7E7E7E 'sixteen elements'" CURV("00000001 0240 .2") CURV("00000000"),
     LutWithParts},
    {"meas", "00000001 00000100 00000200 80000300 00000002 00010000 00000003", NumbersOnly<4>},
    {"mft1", "02 03 02 7E" MATRIX "0300 0200 'abcdef' 'twelve nodes' 'ABCDEF'", Lut<1>},
    {"mft2", "02 03 02 7E" MATRIX "0002 0003 'in of 2x' 'twelve nodes of 2 bytes.' 'out, three x three'", Lut<2>},
    {"mluc", "00000002 0000000C 'enUS' 00000006 00000028 'deDE' 00000004 00000030 0041 20AC 0042 .2 D83D DE00",
     MultiLocalized},
    {"ncl2",
     "00C0FFEE 00000002 00000003 'pre' .29 'suffix' .26 'one' .29 0102 0304 0506 0708 090A 0B0C "
     "'two' .29 FFFE FDFC FBFA F9F8 F7F6 F5F4",
     NamedColors},
    {"ncl2", "80000000 00000001 00000000 .64 'white' .27 FF00 8000 8001", NamedColors},
    {"para", "0000 7E7E 00020000", Parametric},
    {"para", "0004 7E7E 00000001 00000002 00000003 80000004 00000005 00000006 FFFFFFF9", Parametric},
    {"pseq",
     "00000002 'manu' 'modl' 0000000080000001 'fscn' 'mluc' .4 00000001 0000000C 'enUS' 00000004 0000001C 0041 0042 "
     "'desc' .4 00000003 'ab' 00 00000000 00000001 0041 .70 .20 'mluc' .4 00000000 0000000C "
     "'mluc' .4 00000000 0000000C",
     ProfileSequence},
    {"rcs2",
     "0002 0002 00000014 00000050 'StaA' 00000001 00000002 00000001 00000002 00000003 00000004 00000005 80000006 "
     "0001 7E7E 00000100 0002 7E7E 00000200 FFFE 7E7E 80000300 'DN  ' 00000000 00000001 .24 1234 7E7E 00010000",
     ResponseCurves},
    {"sf32", "00010000 FFFF0000 80000001", NumberArray<4>, true},
    {"sig ", "'CRT '", NumbersOnly<4>},
    {"text", "'Copyright' 00", nullptr, true},
    {"uf32", "00010000 FFFF0000", NumberArray<4>, true},
    {"ui08", "00 01 7F 80 FF", NumberArray<1>, true},
    {"ui16", "0001 7F80 FF00", NumberArray<2>, true},
    {"ui32", "00010203 FCFDFEFF", NumberArray<4>, true},
    {"ui64", "0001020304050607 F8F9FAFBFCFDFEFF", NumberArray<8>, true},
    {"view", "00000100 00000200 80000300 00000400 00000500 00000600 00000008", NumbersOnly<4>}};

}  // namespace

const std::vector<Sample>& Samples() {
  static const std::vector<Sample> samples = [] {
    std::vector<Sample> made;
    for (const auto& [type, payload, describe, fills_tag] : kTags) {
      const Bytes tag = BytesFrom(std::string("'") + type + "' 7E7E7E7E " + payload);
      made.push_back({static_cast<uint32_t>(qv::BigEndian(std::span(tag).first(4))), tag, describe, fills_tag});
    }
    return made;
  }();
  return samples;
}

}  // namespace qv_test
