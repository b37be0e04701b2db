// Profiles in PostScript read the slow way: over the whole text at once, one rule after the other.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qv_test {

struct PostScriptModel {
  explicit PostScriptModel(std::string_view file);

  int32_t status;
  std::vector<uint8_t> bytes;  // what has reached the record
};

}  // namespace qv_test
