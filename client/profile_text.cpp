#include "profile_text.h"

#include <algorithm>
#include <cstdio>

namespace client {
namespace {

constexpr char32_t kReplacement = 0xFFFD, kMostCharacter = 0x10FFFF;

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

void AppendUtf8(std::string* text, char32_t c) {
  constexpr char32_t kFirstOfLength[] = {0, 0x80, 0x800, 0x10000};
  constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
  const auto length = std::ranges::upper_bound(kFirstOfLength, c) - kFirstOfLength;
  *text += static_cast<char>(kLead[length - 1] | c >> 6 * (length - 1));
  for (auto rest = length - 1; rest > 0; --rest) *text += static_cast<char>(0x80 | (c >> 6 * (rest - 1) & 0x3F));
}

// Takes a character from the front; nothing when there is none.
std::optional<char32_t> TakeUtf8(std::string_view* text) {
  struct Form {
    unsigned char mask, lead;
    size_t length;
    char32_t least;
  };
  constexpr Form kForms[] = {{0x80, 0, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
  const auto first = static_cast<unsigned char>(text->front());
  const auto* form = std::ranges::find_if(kForms, [&](const Form& f) { return (first & f.mask) == f.lead; });
  if (form == std::end(kForms) || text->size() < form->length) return std::nullopt;
  char32_t c = first & static_cast<unsigned char>(~form->mask);
  for (const char next : text->substr(1, form->length - 1)) {
    if ((next & 0xC0) != 0x80) return std::nullopt;
    c = c << 6 | (next & 0x3F);
  }
  if (c < form->least || c > kMostCharacter || IsSurrogate(c)) return std::nullopt;
  text->remove_prefix(form->length);
  return c;
}

}  // namespace

std::string Utf8FromUtf16(std::span<const uint16_t> text) {
  std::string utf8;
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (IsSurrogate(c)) {
      const char32_t low = i + 1 < text.size() ? text[i + 1] : 0;
      const bool pair = c < 0xDC00 && low >= 0xDC00 && IsSurrogate(low);
      c = pair ? 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
      i += pair ? 1 : 0;
    }
    AppendUtf8(&utf8, c);
  }
  return utf8;
}

std::string Utf8FromBytes(std::span<const uint8_t> text) {
  std::string bytes(text.begin(), std::ranges::find(text, 0));
  if (Utf16FromUtf8(bytes)) return bytes;
  std::string utf8;
  for (const char c : bytes) AppendUtf8(&utf8, static_cast<unsigned char>(c));
  return utf8;
}

std::optional<std::u16string> Utf16FromUtf8(std::string_view text) {
  std::u16string utf16;
  while (!text.empty()) {
    const std::optional<char32_t> c = TakeUtf8(&text);
    if (!c) return std::nullopt;
    if (*c < 0x10000) {
      utf16 += static_cast<char16_t>(*c);
    } else {
      utf16 += static_cast<char16_t>(0xD800 + ((*c - 0x10000) >> 10));
      utf16 += static_cast<char16_t>(0xDC00 + ((*c - 0x10000) & 0x3FF));
    }
  }
  return utf16;
}

std::string Visible(std::string_view utf8) {
  std::string visible;
  while (!utf8.empty()) {
    const std::optional<char32_t> taken = TakeUtf8(&utf8);
    if (!taken) utf8.remove_prefix(1);
    const char32_t c = taken.value_or(kReplacement);
    const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x2028 && c <= 0x202E);  // breaks, directions
    if (control) {
      char code[16];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      visible += code;
    } else {
      AppendUtf8(&visible, c);
    }
  }
  return visible;
}

}  // namespace client
