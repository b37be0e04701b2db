// Image files made and taken apart byte by byte, without the libraries that images are read with.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "support/bytes.h"

namespace qv_test {

// A JPEG file's segments, each with what stands before its marker; the last part is all from the first scan on.
using JpegParts = std::vector<Bytes>;

inline Bytes Segment(uint8_t marker, const Bytes& payload) {
  const size_t length = payload.size() + 2;
  return Joined({{0xFF, marker, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length)}, payload});
}
inline Bytes IccSegment(int number, int of, const Bytes& chunk) {
  return Segment(0xE2, Joined({Text({"ICC_PROFILE\0", 12}), {uint8_t(number), uint8_t(of)}, chunk}));
}
inline Bytes IccSegments(const Bytes& profile) {
  constexpr size_t kChunk = 65519;
  Bytes all;
  const size_t count = (profile.size() + kChunk - 1) / kChunk;
  for (size_t i = 0; i < count; ++i) {
    const auto from = profile.begin() + static_cast<ptrdiff_t>(i * kChunk);
    const Bytes chunk(from, i + 1 == count ? profile.end() : from + kChunk);
    const Bytes segment = IccSegment(static_cast<int>(i + 1), static_cast<int>(count), chunk);
    all.insert(all.end(), segment.begin(), segment.end());
  }
  return all;
}
inline Bytes JpegOf(const JpegParts& parts) {
  Bytes all = {0xFF, 0xD8};
  for (const Bytes& part : parts) std::ranges::copy(part, std::back_inserter(all));
  return all;
}
// No decoder's image, but all that readers of segments look at.
inline const Bytes kScan = {0xFF, 0xDA, 0, 3, 1, 0x12, 0xFF, 0, 0xFF, 0xD0, 0x34, 0xFF, 0xD9, 't', 'a', 'i', 'l'};

// A TIFF file is a list of directories; a rational is two values. Strips of six bytes stand at kTiffPixels.
struct TiffTag {
  uint16_t tag, type;
  std::vector<uint64_t> values;
  bool operator==(const TiffTag&) const = default;
};
struct TiffOrder {
  bool motorola, big;
  size_t Word() const { return big ? 8 : 4; }
};
using TiffDirectory = std::map<uint16_t, TiffTag>;
inline constexpr size_t kTiffPixels = 16;
inline constexpr uint16_t kIccTag = 34675;
// Bytes of an element, and elements of a value, by type; 0 is no type.
inline constexpr std::array<size_t, 19> kTiffBytes = {0, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8, 4, 0, 0, 8, 8, 8};
inline size_t TiffParts(uint16_t type) { return type == 5 || type == 10 ? 2 : 1; }

inline Bytes MakeTiff(TiffOrder order, const std::vector<std::vector<TiffTag>>& directories) {
  Bytes file;
  const auto put = [&](size_t at, uint64_t value, size_t bytes) {
    if (file.size() < at + bytes) file.resize(at + bytes);
    for (size_t i = 0; i < bytes; ++i) file[at + i] = uint8_t(value >> 8 * (order.motorola ? bytes - 1 - i : i));
  };
  const size_t word = order.Word(), room = order.big ? 8 : 2;
  put(0, order.motorola ? 0x4D4D : 0x4949, 2);
  put(2, order.big ? 43 : 42, 2);
  put(4, order.big ? 8 : 0, 2);
  put(kTiffPixels, 0x0102030405060708, 8);
  size_t link = word;
  for (const std::vector<TiffTag>& tags : directories) {
    std::vector<uint64_t> outside(tags.size());
    for (size_t i = 0; i < tags.size(); ++i) {
      const auto& [tag, type, values] = tags[i];
      if (values.size() * kTiffBytes[type] <= word) continue;
      file.resize((file.size() + 1) & ~size_t{1});
      outside[i] = file.size();
      for (const uint64_t value : values) put(file.size(), value, kTiffBytes[type]);
    }
    file.resize((file.size() + 1) & ~size_t{1});
    size_t at = file.size();
    put(link, at, word);
    put(at, tags.size(), room);
    at += room;
    for (size_t i = 0; i < tags.size(); ++i, at += 4 + 2 * word) {
      const auto& [tag, type, values] = tags[i];
      put(at, tag, 2);
      put(at + 2, type, 2);
      put(at + 4, values.size() / TiffParts(type), word);
      put(at + 4 + word, outside[i], word);
      if (outside[i] != 0) continue;
      for (size_t k = 0; k < values.size(); ++k) put(at + 4 + word + k * kTiffBytes[type], values[k], kTiffBytes[type]);
    }
    put(link = at, 0, word);
  }
  return file;
}

// Throws for a file that it does not understand.
inline std::vector<TiffDirectory> DirectoriesOf(const Bytes& file) {
  std::vector<TiffDirectory> directories;
  const bool motorola = file.at(0) == 'M';
  const auto get = [&](size_t at, size_t bytes) {
    uint64_t value = 0;
    for (size_t i = 0; i < bytes; ++i) value |= uint64_t{file.at(at + i)} << 8 * (motorola ? bytes - 1 - i : i);
    return value;
  };
  const TiffOrder order = {motorola, get(2, 2) == 43};
  const size_t word = order.Word(), room = order.big ? 8 : 2;
  for (size_t at = get(word, word); at != 0;) {
    TiffDirectory& tags = directories.emplace_back();
    size_t entry = at + room;
    for (uint64_t left = get(at, room); left > 0; --left, entry += 4 + 2 * word) {
      const auto tag = static_cast<uint16_t>(get(entry, 2)), type = static_cast<uint16_t>(get(entry + 2, 2));
      const size_t bytes = kTiffBytes.at(type), values = get(entry + 4, word) * TiffParts(type);
      const size_t begin = values * bytes <= word ? entry + 4 + word : get(entry + 4 + word, word);
      TiffTag& read = tags[tag] = {tag, type, {}};
      for (size_t i = 0; i < values; ++i) read.values.push_back(get(begin + i * bytes, bytes));
    }
    at = get(entry, word);
  }
  return directories;
}

// The tags that a picture of two pixels needs.
inline std::vector<TiffTag> PixelTags() {
  return {{256, 3, {2}},           {257, 3, {1}}, {258, 3, {8, 8, 8}}, {259, 3, {1}}, {262, 3, {2}},
          {273, 4, {kTiffPixels}}, {277, 3, {3}}, {278, 3, {1}},       {279, 4, {6}}};
}
inline TiffTag ProfileTag(const Bytes& profile) { return {kIccTag, 7, {profile.begin(), profile.end()}}; }
inline Bytes TiffWith(const Bytes& profile) {
  std::vector<TiffTag> tags = PixelTags();
  tags.push_back(ProfileTag(profile));
  return MakeTiff({false, false}, {tags});
}

}  // namespace qv_test
