// Fixed-point numbers of ICC profiles.
#pragma once

#include <cstdint>

namespace qv {

// Digit by digit in base 16. A number without fraction is moved to its place; the digits of a fraction only follow the
// whole part (intended, and what callers see: 1.5 is 0x18).
uint16_t Fixed8FromDouble(double value);   // up to two digits
uint32_t Fixed16FromDouble(double value);  // up to four

constexpr double DoubleFromFixed8(uint16_t value) { return value / 256.0; }
constexpr double DoubleFromFixed16(uint32_t value) { return value / 65536.0; }  // never negative: intended

}  // namespace qv
