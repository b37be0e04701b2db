// The system's last error as a status.
#pragma once

#include "base/status.h"

namespace qv {

// Positive, and never 0 or 1, which would read as no result or as success.
Status LastErrorStatus();

// `otherwise` stands in for the two numbers that a status cannot tell.
constexpr Status StatusOfError(uint32_t error, uint32_t otherwise) {
  return static_cast<Status>(error > 1 && error <= INT32_MAX ? error : otherwise);
}

}  // namespace qv
