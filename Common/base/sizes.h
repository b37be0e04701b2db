// Sizes that cannot wrap: what does not fit in 64 bits is SIZE_MAX, which no buffer is readable for.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qv {

static_assert(sizeof(size_t) == 8);

constexpr size_t Product(size_t a, size_t b) { return b != 0 && a > SIZE_MAX / b ? SIZE_MAX : a * b; }
constexpr size_t Sum(size_t a, size_t b) { return a > SIZE_MAX - b ? SIZE_MAX : a + b; }

}  // namespace qv
