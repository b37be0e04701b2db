// Narrow strings: the system's narrow encoding on Windows, UTF-8 elsewhere.
#pragma once

#include <cstring>
#include <span>

#include "Qvclr15x.h"

namespace qv {

// Converts up to the terminator or, where there is none, all of `narrow`; the rest of `wide` becomes zero. False when
// the text does not fit or is malformed; `wide` is then all zero. Text that fills `wide` has no terminator.
bool WideFromNarrow(std::span<const char> narrow, std::span<QWChar> wide);

// Converts a zero-terminated text; the rest of `narrow`, as long as the names of records, becomes zero. False, and all
// zero, when the text does not fit with its terminator or would not come back the same.
bool NarrowFromWide(const QWChar* wide, std::span<char, 260> narrow);

// Calls `call` with a file name in wide characters, null for null; ERR_FAILURE when it cannot be converted.
template <typename Call>
int32_t WithWideName(const char* name, Call&& call) {
  QWChar wide[260];
  if (!name) return call(nullptr);
  const bool converted = WideFromNarrow({name, std::strlen(name) + 1}, wide);
  return converted && wide[std::size(wide) - 1] == 0 ? call(wide) : int32_t{ERR_FAILURE};
}

}  // namespace qv
