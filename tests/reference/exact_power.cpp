#include "reference/exact_power.h"

#include <cmath>
#include <vector>

namespace qv_test {
namespace {
__extension__ using Wide = unsigned __int128;
}

double ExactPower(double x, uint32_t n) {
  if (x == 0) return 0;
  int exponent = 0;
  const auto mantissa = static_cast<uint64_t>(std::ldexp(std::frexp(std::fabs(x), &exponent), 53));
  std::vector<uint64_t> product = {1};  // digits of 64 bits, the lowest first
  for (uint32_t i = 0; i < n; ++i) {
    Wide carry = 0;
    for (uint64_t& digit : product) {
      carry += Wide{digit} * mantissa;
      digit = static_cast<uint64_t>(carry);
      carry >>= 64;
    }
    product.push_back(static_cast<uint64_t>(carry));
  }
  const auto bit = [&](size_t at) { return product[at / 64] >> at % 64 & 1; };
  size_t top = product.size() * 64;
  while (bit(top - 1) == 0) --top;
  uint64_t kept = 0, below = 0;
  for (size_t at = top; at-- > top - 53;) kept = kept << 1 | bit(at);
  for (size_t at = 0; at < top - 54; ++at) below |= bit(at);
  kept += bit(top - 54) & (below | kept);
  const int shift = static_cast<int>(top) - 53 + (exponent - 53) * static_cast<int>(n);
  const double size = std::ldexp(static_cast<double>(kept), shift);
  return x < 0 && n % 2 != 0 ? -size : size;
}

}  // namespace qv_test
