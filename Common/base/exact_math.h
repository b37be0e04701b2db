// Mathematics with the same bits on every machine. The C libraries of the two systems differ in the last bits of pow
// and its like, which a truncation can turn into another byte.
#pragma once

#include <cstdint>

namespace qv {

// x to the n-th power, n small: worked out to about 100 bits, then rounded. Overflow gives an infinity.
double Power(double x, uint32_t n);

// The conversion of the x86 instruction set: toward zero; what leaves the 32-bit range, and every not-a-number, becomes
// the integer-indefinite value.
constexpr int32_t TruncateToInt32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

}  // namespace qv
