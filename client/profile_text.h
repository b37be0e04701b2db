// Text of profiles, which is UTF-16 or eight bits a character there and UTF-8 in the client.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace client {

// What is no character becomes U+FFFD.
std::string Utf8FromUtf16(std::span<const uint16_t> text);

// Up to the first zero. ICC.1 has ASCII in such places; profiles have UTF-8 or Latin-1 as well.
std::string Utf8FromBytes(std::span<const uint8_t> text);

// Nothing for what is no UTF-8.
std::optional<std::u16string> Utf16FromUtf8(std::string_view text);

// Controls are told by their numbers, so that a profile cannot steer a terminal.
std::string Visible(std::string_view utf8);

}  // namespace client
