#include "IccProfile/fixed_numbers.h"

#include "base/exact_math.h"

namespace qv {
namespace {

// Only the low bits that the caller keeps are right.
uint32_t Encode(double value, int most_digits) {
  const int32_t whole = TruncateToInt32(value);
  double fraction = value - whole;
  auto encoded = static_cast<uint32_t>(whole);
  int digits = 0;
  while (fraction > 0 && digits < most_digits) {
    ++digits;
    fraction *= 16;
    const int32_t digit = TruncateToInt32(digits == most_digits ? fraction + 0.5 : fraction);
    encoded = encoded << 4 | (static_cast<uint32_t>(digit) & 15);  // a last digit of 16 is a 0 without carry
    fraction -= digit;
  }
  return digits > 0 ? encoded : encoded << 4 * most_digits;
}

}  // namespace

uint16_t Fixed8FromDouble(double value) { return static_cast<uint16_t>(Encode(value, 2)); }
uint32_t Fixed16FromDouble(double value) { return Encode(value, 4); }

}  // namespace qv
