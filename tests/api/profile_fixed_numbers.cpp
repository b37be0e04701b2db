// Fixed-point numbers of ICC profiles.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Qvclr15x.h"

namespace {

TEST(FixedNumbers, DecodeExactly) {
  for (uint32_t v = 0; v < 0x10000; ++v) {
    ASSERT_EQ(std::ldexp(Q_U8Fixed8NumberToDouble(static_cast<uint16_t>(v)), 8), v);
    for (const uint32_t wide : {v, v << 16, v << 16 | 0xFFFF, v * 0x10001u}) {
      ASSERT_EQ(std::ldexp(Q_2bFixed2bNumberToDouble(wide), 16), wide) << "never negative";
    }
  }
}

// Of a number with a fraction, the digits up to its last nonzero one follow the whole part without being moved.
uint32_t WithoutTrailingZeros(uint32_t value, uint32_t fraction_mask) {
  while ((value & fraction_mask) != 0 && value % 16 == 0) value /= 16;
  return value;
}

TEST(FixedNumbers, EncodeWhatWasDecodedDigitByDigit) {
  uint32_t same = 0;
  for (uint32_t v = 0; v < 0x10000; ++v) {
    const uint16_t encoded = Q_DoubleToU8Fixed8Number(Q_U8Fixed8NumberToDouble(static_cast<uint16_t>(v)));
    const uint32_t expected = (v & 0xFF) != 0 && v % 16 == 0 ? v / 16 : v;
    ASSERT_EQ(encoded, expected) << v;
    same += encoded == v;
    for (const uint32_t whole : {0u, 1u, 0x7FFFu}) {
      const uint32_t wide = whole << 16 | v;
      ASSERT_EQ(Q_DoubleTo2bFixed2bNumber(wide / 65536.0), WithoutTrailingZeros(wide, 0xFFFF)) << wide;
    }
  }
  EXPECT_EQ(same, 256u * (1 + 240));
}

TEST(FixedNumbers, EncodeWorkedValues) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const struct {
    double value;
    uint16_t fixed8;
    uint32_t fixed16;
  } facts[] = {
      {0.0, 0, 0},
      {0.1, 0x1A, 0x199A},
      {0.9642, 0xF7, 0xF6D6},      // 15.4272 and 6.8352 sixteenths, the latter rounded
      {1.999, 0x1F0, 0x1FFBE},     // its second digit rounds to 16
      {1 / 65536.0, 0x00, 0x1},    // four digits 0001; of two, both are 0
      {0.99999999, 0xF0, 0xFFF0},  // a last digit of 16
      {-1.0, 0xFF00, 0xFFFF0000},
      {-0.5, 0, 0},
      {32767.5, 0xFFF8, 0x7FFF8},
      {65535.0, 0xFF00, 0xFFFF0000},
      {kInfinity, 0x0000, 0x00000000},
  };
  for (const auto& fact : facts) {
    EXPECT_EQ(Q_DoubleToU8Fixed8Number(fact.value), fact.fixed8) << fact.value;
    EXPECT_EQ(Q_DoubleTo2bFixed2bNumber(fact.value), fact.fixed16) << fact.value;
  }
}

}  // namespace
