// Lookup in an emulation table by the rule as it is defined, in coordinates and fractions of steps, pixel by pixel.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qv_test {

class EmulationModel {
 public:
  // The side of which the second and third bytes are signed.
  enum class Signed : uint8_t { kNeither, kSource, kTarget };

  EmulationModel(size_t channels, int step, Signed side, const uint8_t* table);
  void Convert(const uint8_t* src, uint8_t* dst) const;

 private:
  // What one channel's byte contributes; worked out once.
  struct Part {
    double ceiling;             // of the byte in steps
    size_t upper_at, lower_at;  // of the corners, along the channel
  };
  struct Channel {
    bool is_signed;
    size_t weight;
    std::array<Part, 256> parts;
  };

  Part PartOf(uint8_t byte, bool is_signed) const;
  bool IsOnNode(const uint8_t* src, size_t node) const;

  int step_;
  bool signed_target_;
  const uint8_t* table_;
  std::vector<Channel> channels_;
};

}  // namespace qv_test
