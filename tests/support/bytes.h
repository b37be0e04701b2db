// Byte strings.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace qv_test {

using Bytes = std::vector<uint8_t>;

// The same bytes on every system.
inline Bytes RandomBytes(size_t count, uint64_t seed = 1) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    byte = static_cast<uint8_t>(seed >> 56);
  }
  return bytes;
}

// Many greys and many ends of the range.
inline Bytes EdgeBytes(size_t count, uint64_t seed) {
  Bytes bytes = RandomBytes(count, seed);
  for (size_t i = 1; i < count; ++i) {
    if (bytes[i] % 4 != 0) bytes[i] = bytes[i] % 4 == 1 ? bytes[i - 1] : uint8_t(bytes[i] % 4 == 2 ? 0 : 255);
  }
  return bytes;
}

inline Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}
inline Bytes Text(std::string_view text) { return {text.begin(), text.end()}; }
inline Bytes First(const Bytes& bytes, size_t count) {
  return {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count)};
}

// R, G, B and B, G, R.
inline Bytes EndsSwapped(Bytes rgb) {
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) std::swap(rgb[i], rgb[i + 2]);
  return rgb;
}

// Signatures of ICC profiles as the numbers that they are.
constexpr uint32_t Sig(const char* text) {
  uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number * 256 + static_cast<uint8_t>(text[i]);
  return number;
}

}  // namespace qv_test
