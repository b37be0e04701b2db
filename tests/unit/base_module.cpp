#include "base/module.h"

#include <gtest/gtest.h>

namespace {
using namespace qv;

TEST(Module, HoldsItsFourProfilesAndNoOther) {
  std::span<const uint8_t> bytes;
  EXPECT_EQ(static_cast<int>(FindModuleResource(OwnModule(), "ICN", 105, &bytes)), 1813);
  EXPECT_EQ(static_cast<int>(FindModuleResource(OwnModule(), "ICM", 108, &bytes)), 1814);
  EXPECT_EQ(bytes.data(), nullptr);
  for (const auto& [number, size] : {std::pair{105u, 3144u}, {106u, 200182u}, {107u, 725436u}, {110u, 102000u}}) {
    ASSERT_EQ(FindModuleResource(OwnModule(), "ICM", number, &bytes), kSuccess) << number;
    ASSERT_EQ(bytes.size(), size) << number;
    EXPECT_EQ(bytes[1] << 16 | bytes[2] << 8 | bytes[3], static_cast<int>(size)) << number;  // as the profile tells it
  }
}

}  // namespace
