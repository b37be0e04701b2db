#include <cerrno>

#include "base/last_error.h"

namespace qv {
Status LastErrorStatus() { return StatusOfError(static_cast<uint32_t>(errno), EACCES); }  // EPERM is 1
}  // namespace qv
