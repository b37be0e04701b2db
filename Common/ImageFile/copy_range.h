// Copies a part of a file, as it stands, to where another file is written.
#pragma once

#include "base/files.h"

namespace qv {

bool CopyRange(File& from, int64_t begin, int64_t end, File& to);  // false too without memory

}  // namespace qv
