// A value as the unevaluated sum of two doubles: about 100 bits out of ordinary arithmetic, the same on every machine.
// T. J. Dekker, "A floating-point technique for extending the available precision" (1971).
#pragma once

namespace qv {

struct TwoDoubles {
  double high, low = 0;  // |low| is at most half a unit in the last place of high

  constexpr double Rounded() const { return high + low; }
};

constexpr TwoDoubles QuickSum(double larger, double smaller) {
  const double sum = larger + smaller;
  return {sum, smaller - (sum - larger)};
}

constexpr TwoDoubles ExactSum(double a, double b) {
  const double sum = a + b, b_part = sum - a;
  return {sum, (a - (sum - b_part)) + (b - b_part)};
}

constexpr TwoDoubles ExactProduct(double a, double b) {
  constexpr double kSplitter = 134217729.0;  // 2^27 + 1
  const double a_big = kSplitter * a, b_big = kSplitter * b;
  const double a_high = a_big - (a_big - a), b_high = b_big - (b_big - b);
  const double a_low = a - a_high, b_low = b - b_high;
  const double product = a * b;
  return {product, ((a_high * b_high - product) + a_high * b_low + a_low * b_high) + a_low * b_low};
}

constexpr TwoDoubles operator+(const TwoDoubles& a, const TwoDoubles& b) {
  const TwoDoubles high = ExactSum(a.high, b.high);
  return QuickSum(high.high, high.low + (a.low + b.low));
}
constexpr TwoDoubles operator-(const TwoDoubles& a) { return {-a.high, -a.low}; }
constexpr TwoDoubles operator-(const TwoDoubles& a, const TwoDoubles& b) { return a + -b; }

constexpr TwoDoubles operator*(const TwoDoubles& a, const TwoDoubles& b) {
  const TwoDoubles high = ExactProduct(a.high, b.high);
  return QuickSum(high.high, high.low + (a.high * b.low + a.low * b.high));
}

constexpr TwoDoubles operator/(const TwoDoubles& a, const TwoDoubles& b) {
  const double first = a.high / b.high;
  const TwoDoubles rest = a - b * TwoDoubles{first};
  const double second = rest.high / b.high;
  const TwoDoubles last = rest - b * TwoDoubles{second};
  const TwoDoubles sum = QuickSum(first, second);
  return sum + TwoDoubles{last.high / b.high};
}

}  // namespace qv
