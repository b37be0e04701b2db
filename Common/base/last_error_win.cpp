#include <windows.h>

#include "base/last_error.h"

namespace qv {
Status LastErrorStatus() { return StatusOfError(GetLastError(), ERROR_GEN_FAILURE); }
}  // namespace qv
