#include "support/sha256.h"

#include <bit>
#include <cstdio>

namespace qv_test {
namespace {

__extension__ using Wide = unsigned __int128;

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes, found in integers.
constexpr std::array<uint32_t, 64> kRoundConstants = [] {
  std::array<uint32_t, 64> constants{};
  size_t found = 0;
  for (uint32_t n = 2; found < constants.size(); ++n) {
    bool prime = true;
    for (uint32_t d = 2; d * d <= n; ++d) prime = prime && n % d != 0;
    if (!prime) continue;
    // The largest r with r^3 <= n * 2^96, bit by bit; r < 7 * 2^32.
    Wide low = 0;
    for (int bit = 34; bit >= 0; --bit) {
      const Wide r = low | Wide{1} << bit;
      if (r * r * r <= Wide{n} << 96) low = r;
    }
    constants[found++] = static_cast<uint32_t>(low);
  }
  return constants;
}();

uint32_t Big32(const uint8_t* at) {
  return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
}

}  // namespace

void Sha256::Block(const uint8_t* block) {
  std::array<uint32_t, 64> w{};
  for (size_t t = 0; t < 16; ++t) w[t] = Big32(block + 4 * t);
  for (size_t t = 16; t < 64; ++t) {
    const uint32_t a = w[t - 15], b = w[t - 2];
    w[t] = w[t - 16] + w[t - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ (a >> 3)) +
           (std::rotr(b, 17) ^ std::rotr(b, 19) ^ (b >> 10));
  }
  auto [a, b, c, d, e, f, g, h] = state_;
  for (size_t t = 0; t < 64; ++t) {
    const uint32_t big_e = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const uint32_t big_a = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const uint32_t one = h + big_e + ((e & f) ^ (~e & g)) + kRoundConstants[t] + w[t];
    const uint32_t two = big_a + ((a & b) ^ (a & c) ^ (b & c));
    h = g, g = f, f = e, e = d + one, d = c, c = b, b = a, a = one + two;
  }
  const std::array<uint32_t, 8> step = {a, b, c, d, e, f, g, h};
  for (size_t i = 0; i < 8; ++i) state_[i] += step[i];
}

void Sha256::Add(std::span<const uint8_t> bytes) {
  for (const uint8_t byte : bytes) {
    rest_[length_++ % 64] = byte;
    if (length_ % 64 == 0) Block(rest_.data());
  }
}

std::string Sha256::Hex() {
  const uint64_t bits = length_ * 8;
  const uint8_t end = 0x80, zero = 0;
  Add({&end, 1});
  while (length_ % 64 != 56) Add({&zero, 1});
  for (int shift = 56; shift >= 0; shift -= 8) {
    const auto byte = static_cast<uint8_t>(bits >> shift);
    Add({&byte, 1});
  }
  std::string hex;
  for (const uint32_t word : state_) {
    char text[9];
    std::snprintf(text, sizeof text, "%08x", word);
    hex += text;
  }
  return hex;
}

}  // namespace qv_test
