// UTF-8 and UTF-16 for systems whose narrow encoding is UTF-8.
#pragma once

#include <span>

#include "Qvclr15x.h"

namespace qv {

// Writes the zero-terminated name as UTF-8 with its terminator. False when it does not fit or has a lone surrogate.
bool Utf8FromWide(const QWChar* wide, std::span<char> utf8);

}  // namespace qv
