#include "base/exact_math.h"

#include <bit>
#include <cmath>
#include <limits>

#include "base/two_doubles.h"

namespace qv {
namespace {

constexpr TwoDoubles kLn2 = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

// The logarithm of x > 0: 2 artanh((m - 1) / (m + 1)) of a significand m between the roots of 1/2 and 2.
TwoDoubles Logarithm(double x) {
  int exponent = 0;
  double significand = std::frexp(x, &exponent);
  if (significand < 0.70710678118654752) {
    significand *= 2;
    --exponent;
  }
  const TwoDoubles ratio = ExactSum(significand, -1) / ExactSum(significand, 1);
  const TwoDoubles square = ratio * ratio;
  TwoDoubles sum = {0};
  for (int k = 49; k >= 1; k -= 2) sum = sum * square + TwoDoubles{1} / TwoDoubles{static_cast<double>(k)};
  return kLn2 * TwoDoubles{static_cast<double>(exponent)} + TwoDoubles{2} * ratio * sum;
}

double Exponential(const TwoDoubles& x) {
  const double exponent = std::floor(x.high / kLn2.high + 0.5);
  const TwoDoubles rest = x - kLn2 * TwoDoubles{exponent};
  TwoDoubles sum = {1};
  for (int k = 27; k >= 1; --k) sum = sum * rest / TwoDoubles{static_cast<double>(k)} + TwoDoubles{1};
  return std::ldexp(sum.Rounded(), static_cast<int>(exponent));
}

}  // namespace

double Power(double x, uint32_t n) {
  if (x == 0 || !std::isfinite(x)) return n == 0 ? 1 : (n % 2 == 0 ? x * x : x);
  // The powers are of the significand, so that nothing overflows on the way; its exponent is put back at the end.
  int exponent = 0;
  const TwoDoubles significand = {std::frexp(x, &exponent)};
  TwoDoubles result = {1};
  int64_t scale = 0;
  for (uint32_t i = 0; i < n; ++i) {
    result = result * significand;
    int shift = 0;
    result.high = std::frexp(result.high, &shift);
    result.low = std::ldexp(result.low, -shift);
    scale += int64_t{exponent} + shift;
  }
  if (scale > 1100) return result.high < 0 ? -HUGE_VAL : HUGE_VAL;
  if (scale < -1100) return result.high < 0 ? -0.0 : 0.0;
  return std::ldexp(result.Rounded(), static_cast<int>(scale));
}

double RealPower(double x, double y) {
  if (x == 0) return y == 0 ? 1 : 0;
  return Exponential(Logarithm(x) * TwoDoubles{y});
}

double Cosine(double radians) {
  const TwoDoubles square = ExactProduct(radians, radians);
  TwoDoubles sum = {1};
  for (int k = 46; k >= 2; k -= 2) sum = TwoDoubles{1} - sum * square / TwoDoubles{static_cast<double>(k * (k - 1))};
  return sum.Rounded();
}

// Rational approximation of (arcsin(s) - s) / s^3 for |s| <= 1/2, with the coefficients of the Freely Distributable
// LIBM.
double ArcCosine(double x) {
  const auto excess = [](double square) {
    const double p =
        1.66666666666666657415e-01 +
        square * (-3.25565818622400915405e-01 +
                  square * (2.01212532134862925881e-01 +
                            square * (-4.00555345006794114027e-02 +
                                      square * (7.91534994289814532176e-04 + square * 3.47933107596021167570e-05))));
    const double q =
        1 + square * (-2.40339491173441421878e+00 +
                      square * (2.02094576023350569471e+00 +
                                square * (-6.88283971605453293030e-01 + square * 7.70381505559019352791e-02)));
    return square * p / q;
  };
  constexpr double kHalfPi = 0x1.921fb54442d18p0, kHalfPiRest = 0x1.1a62633145c07p-54;
  if (!(x >= -1 && x <= 1)) return std::numeric_limits<double>::quiet_NaN();
  if (x >= -0.5 && x <= 0.5) return kHalfPi - (x - (kHalfPiRest - x * excess(x * x)));
  const double square = (x < 0 ? 1 + x : 1 - x) / 2;  // of the sine of half the angle to the near end
  const double root = std::sqrt(square);
  if (x < 0) return 2 * (kHalfPi - (root + (root * excess(square) - kHalfPiRest)));
  // The root's own error, so that small angles keep their last bit.
  const TwoDoubles error = TwoDoubles{square} - ExactProduct(root, root);
  const double rest = root > 0 ? error.high / (2 * root) : 0;
  return 2 * (root + (root * excess(square) + rest));
}

double CubeRoot(double x) {
  if (!(x > 0) || !std::isfinite(x)) return x;
  int exponent = 0;
  double m = std::frexp(x, &exponent);
  for (; exponent % 3 != 0; ++exponent) m /= 2;
  double root = 0.4 + 0.7 * m;  // m is in 1/8..1: within 12 %
  for (int i = 0; i < 4; ++i) root -= (root - m / (root * root)) / 3;
  // One more step with the remainder in full.
  const TwoDoubles cube = ExactProduct(root, root) * TwoDoubles{root};
  root -= (cube - TwoDoubles{m}).Rounded() / (3 * root * root);
  return std::ldexp(root, exponent / 3);
}

}  // namespace qv
