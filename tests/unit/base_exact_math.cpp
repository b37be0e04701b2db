#include "base/exact_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {
using qv::Power, qv::TruncateToInt32;
__extension__ using Wide = unsigned __int128;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The n-th power in whole numbers of any length, cut to 53 bits with ties to even.
double ExactlyRoundedPower(double x, uint32_t n) {
  int exponent = 0;
  const auto significand = static_cast<uint64_t>(std::ldexp(std::frexp(std::fabs(x), &exponent), 53));
  std::vector<uint64_t> limbs = {0, 1};  // 64 bits of fraction: each power has more than 53
  for (uint32_t i = 0; i < n; ++i) {
    Wide carry = 0;
    for (uint64_t& limb : limbs) {
      carry += Wide{limb} * significand;
      limb = static_cast<uint64_t>(carry);
      carry >>= 64;
    }
    limbs.push_back(static_cast<uint64_t>(carry));
  }
  const auto bit = [&](size_t i) { return limbs[i / 64] >> (i % 64) & 1; };
  size_t top = limbs.size() * 64 - 1;
  while (!bit(top)) --top;
  uint64_t kept = 0, below_half = 0;
  for (size_t i = top; i > top - 53; --i) kept = kept << 1 | bit(i);
  for (size_t i = 0; i < top - 53; ++i) below_half |= bit(i);
  kept += bit(top - 53) & (below_half | (kept & 1));
  const int scale = static_cast<int>(top) - 52 - 64 + static_cast<int>(n) * (exponent - 53);
  return std::ldexp(x < 0 && n % 2 == 1 ? -static_cast<double>(kept) : static_cast<double>(kept), scale);
}

TEST(Power, IsCorrectlyRounded) {
  ASSERT_EQ(ExactlyRoundedPower(-1.5, 5), -7.59375);
  for (const uint32_t n : {2u, 4u, 5u}) {
    for (int p = -3000; p <= 5000; ++p) {
      const double x = p / 1000.0;
      ASSERT_EQ(Power(x, n), p == 0 ? 0 : ExactlyRoundedPower(x, n)) << x << " to the power " << n;
    }
    for (const double x : {1e60, -1e61, 1e-60, 1.0000000000000002, 0x1.fffffffffffffp-1, -0x1.fffffffffffffp203}) {
      EXPECT_EQ(Power(x, n), ExactlyRoundedPower(x, n)) << x << " to the power " << n;
    }
  }
}

TEST(Power, LeavesTheRangeWithItsSign) {
  EXPECT_EQ(Power(-0x1.8p511, 2), 0x1.2p1023);
  EXPECT_EQ(Power(0x1p-537, 2), 0x1p-1074);
  for (const double x : {-0x1p256, -1e300, -kInfinity}) {
    EXPECT_EQ(Power(x, 4), kInfinity) << x;
    EXPECT_EQ(Power(x, 5), -kInfinity) << x;
  }
  for (const double x : {-0x1p-270, -1e-300, -5e-324, -0.0}) {
    EXPECT_TRUE(Power(x, 5) == 0 && std::signbit(Power(x, 5))) << x;
    EXPECT_TRUE(Power(x, 4) == 0 && !std::signbit(Power(x, 4))) << x;
  }
  EXPECT_TRUE(std::isnan(Power(kNaN, 2)));
  EXPECT_TRUE(Power(-2.5, 0) == 1 && Power(0, 0) == 1 && Power(kInfinity, 0) == 1);
}

TEST(TruncateToInt32, GoesTowardZeroAndMarksWhatIsOutside) {
  for (const double value : {0.999, -0.999, 1e-300}) EXPECT_EQ(TruncateToInt32(value), 0) << value;
  EXPECT_EQ(TruncateToInt32(-1.5), -1);
  EXPECT_EQ(TruncateToInt32(2147483647.9999998), INT32_MAX);
  EXPECT_EQ(TruncateToInt32(-2147483647.9999998), -INT32_MAX);
  for (const double value : {2147483648.0, 4294967297.0, -2147483648.5, -4294967295.0, kInfinity, -kInfinity, kNaN}) {
    EXPECT_EQ(TruncateToInt32(value), INT32_MIN) << value;
  }
}

}  // namespace
