#include <windows.h>

#include <algorithm>

#include "base/text.h"

namespace qv {

bool WideFromNarrow(std::span<const char> narrow, std::span<QWChar> wide) {
  std::ranges::fill(wide, QWChar{0});
  const auto length = std::ranges::find(narrow, '\0') - narrow.begin();
  if (length == 0 || wide.empty()) return length == 0;
  const int units = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, narrow.data(), static_cast<int>(length),
                                        wide.data(), static_cast<int>(wide.size()));
  if (units > 0) return true;
  std::ranges::fill(wide, QWChar{0});
  return false;
}

}  // namespace qv
