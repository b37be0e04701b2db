#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string_view>

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

bool NarrowFromWide(const QWChar* wide, std::span<char, 260> narrow) {
  std::ranges::fill(narrow, '\0');
  const int room = static_cast<int>(narrow.size());
  if (WideCharToMultiByte(CP_ACP, 0, wide, -1, narrow.data(), room, nullptr, nullptr) > 0) {
    // The system puts similar characters for those that the code page lacks; which ones, only the way back tells.
    QWChar back[260];
    const int units = MultiByteToWideChar(CP_ACP, 0, narrow.data(), -1, back, static_cast<int>(std::size(back)));
    if (units > 0 && std::wstring_view(back) == wide) return true;
  }
  std::ranges::fill(narrow, '\0');
  return false;
}

}  // namespace qv
