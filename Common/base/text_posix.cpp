#include <algorithm>
#include <cstdint>

#include "base/text.h"
#include "base/utf8_posix.h"

namespace qv {
namespace {

constexpr char32_t kMalformed = 0xFFFFFFFF;

// Takes one code point off the front: no overlong forms, no surrogates, nothing above U+10FFFF.
char32_t TakeCodePoint(std::span<const char>& text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  const size_t length = lead < 0x80                   ? 1
                        : lead >= 0xC2 && lead < 0xE0 ? 2
                        : (lead & 0xF0) == 0xE0       ? 3
                        : lead < 0xF5                 ? 4
                                                      : 0;
  if (length == 0 || (length == 4 && lead < 0xF0) || text.size() < length) return kMalformed;
  char32_t point = length == 1 ? lead : lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) {
    const auto trail = static_cast<uint8_t>(text[i]);
    if ((trail & 0xC0) != 0x80) return kMalformed;
    point = point << 6 | (trail & 0x3F);
  }
  text = text.subspan(length);
  const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
  return overlong || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000) ? kMalformed : point;
}

}  // namespace

bool WideFromNarrow(std::span<const char> narrow, std::span<QWChar> wide) {
  std::ranges::fill(wide, QWChar{0});
  narrow = narrow.first(static_cast<size_t>(std::ranges::find(narrow, '\0') - narrow.begin()));
  size_t used = 0;
  while (!narrow.empty()) {
    const char32_t point = TakeCodePoint(narrow);
    const size_t units = point < 0x10000 ? 1 : 2;
    if (point == kMalformed || units > wide.size() - used) {
      std::ranges::fill(wide, QWChar{0});
      return false;
    }
    if (units == 2) wide[used++] = static_cast<QWChar>(0xD7C0 + (point >> 10));
    wide[used++] = static_cast<QWChar>(units == 2 ? 0xDC00 + (point & 0x3FF) : point);
  }
  return true;
}

bool NarrowFromWide(const QWChar* wide, std::span<char, 260> narrow) {
  std::ranges::fill(narrow, '\0');
  if (Utf8FromWide(wide, narrow)) return true;
  std::ranges::fill(narrow, '\0');
  return false;
}

bool Utf8FromWide(const QWChar* wide, std::span<char> utf8) {
  size_t used = 0;
  while (*wide) {
    char32_t point = *wide++;
    if (point >= 0xD800 && point < 0xE000) {
      if (point >= 0xDC00 || *wide < 0xDC00 || *wide >= 0xE000) return false;
      point = 0x10000 + ((point - 0xD800) << 10) + (*wide++ - 0xDC00u);
    }
    const size_t length = point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
    if (length + 1 > utf8.size() - used) return false;
    if (length == 1) {
      utf8[used++] = static_cast<char>(point);
      continue;
    }
    utf8[used++] = static_cast<char>((0xF00 >> length) | (point >> (6 * (length - 1))));
    for (size_t i = length - 1; i-- > 0;) utf8[used++] = static_cast<char>(0x80 | ((point >> (6 * i)) & 0x3F));
  }
  if (used >= utf8.size()) return false;
  utf8[used] = 0;
  return true;
}

}  // namespace qv
