// SHA-256 (FIPS 180-4), for the file of output hashes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace qv_test {

class Sha256 {
 public:
  void Add(std::span<const uint8_t> bytes);
  std::string Hex();  // ends the message

 private:
  void Block(const uint8_t* block);

  std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                    0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<uint8_t, 64> rest_{};
  uint64_t length_ = 0;
};

}  // namespace qv_test
