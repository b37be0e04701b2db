#include "base/exact_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "reference/models.h"

namespace {
using qv::Power, qv::TruncateToInt32;
using qv_test::ExactPower;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Power, IsCorrectlyRounded) {
  ASSERT_EQ(ExactPower(-1.5, 5), -7.59375);
  for (const uint32_t n : {2u, 4u, 5u}) {
    for (int p = -3000; p <= 5000; ++p) {
      const double x = p / 1000.0;
      ASSERT_EQ(Power(x, n), p == 0 ? 0 : ExactPower(x, n)) << x << " to the power " << n;
    }
    for (const double x : {1e60, -1e61, 1e-60, 1.0000000000000002, 0x1.fffffffffffffp-1, -0x1.fffffffffffffp203}) {
      EXPECT_EQ(Power(x, n), ExactPower(x, n)) << x << " to the power " << n;
    }
  }
}

TEST(Power, LeavesTheRangeWithItsSign) {
  EXPECT_EQ(Power(-0x1.8p511, 2), 0x1.2p1023);
  EXPECT_EQ(Power(0x1p-537, 2), 0x1p-1074);
  for (const double x : {-0x1p256, -kInfinity}) EXPECT_TRUE(Power(x, 4) == kInfinity && Power(x, 5) == -kInfinity) << x;
  for (const double x : {-0x1p-270, -5e-324, -0.0}) {
    EXPECT_TRUE(Power(x, 5) == 0 && std::signbit(Power(x, 5)) && Power(x, 4) == 0 && !std::signbit(Power(x, 4))) << x;
  }
  EXPECT_TRUE(std::isnan(Power(kNaN, 2)) && Power(-2.5, 0) == 1 && Power(0, 0) == 1 && Power(kInfinity, 0) == 1);
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
