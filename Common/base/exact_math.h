// Mathematics with the same bits on every machine: nothing but additions, multiplications, divisions and square roots,
// which IEEE 754 rounds in one way only. The C libraries of the two systems differ in the last bits of pow and its
// like, which a truncation can turn into another byte.
#pragma once

#include <cstdint>

namespace qv {

// For tables: worked out to about 100 bits, then rounded; slow.
double Power(double x, uint32_t n);    // n small; overflow gives an infinity
double RealPower(double x, double y);  // x >= 0, the result within the range of normal numbers (0 for x = 0, y > 0)
double Cosine(double radians);         // |radians| at most 4

// Within one unit in the last place. For pixels.
double ArcCosine(double x);  // not-a-number outside of -1..1
double CubeRoot(double x);   // x >= 0

// The conversion of the x86 instruction set: toward zero; what leaves the 32-bit range, and every not-a-number, becomes
// the integer-indefinite value.
constexpr int32_t TruncateToInt32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

}  // namespace qv
