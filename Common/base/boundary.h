// The edge of the library: a function body run here lets no exception out.
#pragma once

#include <new>

#include "base/status.h"

namespace qv {

// A bad_alloc becomes `out_of_memory`: the converter functions and the profile functions tell it by different codes.
template <typename Body>
int32_t AtBoundary(Status out_of_memory, Body&& body) noexcept {
  try {
    return static_cast<int32_t>(body());
  } catch (const std::bad_alloc&) {
    return static_cast<int32_t>(out_of_memory);
  } catch (...) {
    return ERR_FAILURE;
  }
}

}  // namespace qv
