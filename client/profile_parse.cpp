#include "profile_parse.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "failure.h"

namespace client {
namespace {

template <typename Number, typename... Format>
bool Parsed(std::string_view text, Number* number, Format... format) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *number, format...);
  return error == std::errc() && stop == end;
}

// A number of `unit`s, which fits between two of them.
int64_t ParseUnits(const std::string& text, double unit, int64_t least, int64_t most) {
  double number = 0;
  if (!Parsed(text, &number) || !std::isfinite(number)) Fail("'", text, "' is no number");
  const double units = number * unit;
  if (units <= static_cast<double>(least) - 0.5 || units >= static_cast<double>(most) + 0.5) {
    Fail("'", text, "' is out of range");
  }
  return std::llround(units);
}

}  // namespace

uint32_t ParseSignature(const std::string& text) {
  constexpr size_t kCharacters = 4, kWithDigits = 10;
  uint32_t number = 0;
  if (text.size() == kWithDigits && text.starts_with("0x")) {
    if (Parsed(std::string_view(text).substr(2), &number, 16)) return number;
  }
  const bool printable = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
  if (text.empty() || text.size() > kCharacters || !printable) {
    Fail("'", text, "' is no signature: up to four characters, or 0x and eight digits");
  }
  for (size_t i = 0; i < kCharacters; ++i) number = number << 8 | static_cast<uint8_t>(i < text.size() ? text[i] : ' ');
  return number;
}

uint64_t ParseWhole(const std::string& text, uint64_t most) {
  uint64_t number = 0;
  if (!Parsed(text, &number) || number > most) Fail("'", text, "' is no whole number from 0 to ", most);
  return number;
}

IccDateTime ParseDate(const std::string& text) {
  unsigned field[6];
  char end = 0;
  const int fields = std::sscanf(text.c_str(), "%4u-%2u-%2u %2u:%2u:%2u%c", &field[0], &field[1], &field[2], &field[3],
                                 &field[4], &field[5], &end);
  if (fields != 6) Fail("'", text, "' is no date YYYY-MM-DD hh:mm:ss");
  const auto number = [&](size_t i) { return static_cast<uint16_t>(field[i]); };
  return {number(0), number(1), number(2), number(3), number(4), number(5)};
}

IccDateTime Now() {
  using namespace std::chrono;
  const auto now = floor<seconds>(system_clock::now());
  const auto today = floor<days>(now);
  const year_month_day day(today);
  const hh_mm_ss time(now - today);
  const auto number = [](auto value) { return static_cast<uint16_t>(value); };
  return {number(static_cast<int>(day.year())),     number(static_cast<unsigned>(day.month())),
          number(static_cast<unsigned>(day.day())), number(time.hours().count()),
          number(time.minutes().count()),           number(time.seconds().count())};
}

uint16_t ParseFixed8(const std::string& text) { return static_cast<uint16_t>(ParseUnits(text, 256, 0, UINT16_MAX)); }
uint32_t ParseFixed16(const std::string& text) { return static_cast<uint32_t>(ParseUnits(text, 65536, 0, UINT32_MAX)); }
uint32_t ParseSignedFixed16(const std::string& text) {
  return static_cast<uint32_t>(ParseUnits(text, 65536, INT32_MIN, INT32_MAX));
}

}  // namespace client
