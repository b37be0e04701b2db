// Narrow strings: the system's narrow encoding on Windows, UTF-8 elsewhere.
#pragma once

#include <span>

#include "Qvclr15x.h"

namespace qv {

// Converts up to the terminator or, where there is none, all of `narrow`; the rest of `wide` becomes zero. False when
// the text does not fit or is malformed; `wide` is then all zero. Text that fills `wide` has no terminator.
bool WideFromNarrow(std::span<const char> narrow, std::span<QWChar> wide);

}  // namespace qv
