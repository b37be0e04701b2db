// Powers as a correctly rounded pow gives them, worked out in integers of any length.
#pragma once

#include <cstdint>

namespace qv_test {

// x to the n-th power, n at least 2, rounded once to nearest, ties to even. The result is no subnormal and no infinity.
double ExactPower(double x, uint32_t n);

}  // namespace qv_test
