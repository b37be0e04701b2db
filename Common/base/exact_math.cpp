#include "base/exact_math.h"

#include <cmath>

namespace qv {
namespace {

// A value as the unevaluated sum of two doubles, |low| at most half a unit in the last place of high.
struct TwoDoubles {
  double high, low;
};

// T. J. Dekker, "A floating-point technique for extending the available precision" (1971).
TwoDoubles ExactProduct(double a, double b) {
  constexpr double kSplitter = 134217729.0;  // 2^27 + 1
  const double a_big = kSplitter * a, b_big = kSplitter * b;
  const double a_high = a_big - (a_big - a), b_high = b_big - (b_big - b);
  const double a_low = a - a_high, b_low = b - b_high;
  const double product = a * b;
  return {product, ((a_high * b_high - product) + a_high * b_low + a_low * b_high) + a_low * b_low};
}

TwoDoubles Multiply(const TwoDoubles& a, const TwoDoubles& b) {
  const TwoDoubles main = ExactProduct(a.high, b.high);
  const double rest = main.low + (a.high * b.low + a.low * b.high);
  const double sum = main.high + rest;
  return {sum, rest - (sum - main.high)};
}

}  // namespace

double Power(double x, uint32_t n) {
  if (x == 0 || !std::isfinite(x)) return n == 0 ? 1 : (n % 2 == 0 ? x * x : x);
  // The powers are of the significand, so that nothing overflows on the way; its exponent is put back at the end.
  int exponent = 0;
  TwoDoubles factor = {std::frexp(x, &exponent), 0};
  int64_t scale = 0, factor_scale = exponent;
  TwoDoubles result = {1, 0};
  for (; n != 0; n >>= 1) {
    if (n & 1) {
      result = Multiply(result, factor);
      scale += factor_scale;
    }
    factor = Multiply(factor, factor);
    factor_scale *= 2;
    int shift = 0;
    factor.high = std::frexp(factor.high, &shift);
    factor.low = std::ldexp(factor.low, -shift);
    factor_scale += shift;
    int result_shift = 0;
    result.high = std::frexp(result.high, &result_shift);
    result.low = std::ldexp(result.low, -result_shift);
    scale += result_shift;
  }
  if (scale > 1100) return result.high < 0 ? -HUGE_VAL : HUGE_VAL;
  if (scale < -1100) return result.high < 0 ? -0.0 : 0.0;
  return std::ldexp(result.high + result.low, static_cast<int>(scale));
}

}  // namespace qv
