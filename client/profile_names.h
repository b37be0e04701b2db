// What ICC.1 registers, with words for it.
#pragma once

#include <cstdint>
#include <span>

namespace client {

constexpr uint32_t Number(const char (&text)[5]) {
  uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<uint8_t>(text[i]);
  return number;
}

// Each null for a number that is not registered.
const char* ClassName(uint32_t signature);
const char* SpaceName(uint32_t signature);
const char* PlatformName(uint32_t signature);
const char* IntentName(uint32_t number);
const char* TagName(uint32_t signature);
const char* ObserverName(uint32_t number);
const char* GeometryName(uint32_t number);
const char* IlluminantName(uint32_t number);
const char* PhosphorName(uint32_t number);
const char* MeasurementUnitName(uint32_t signature);
const char* ValueName(uint32_t signature);  // of the tags that hold one signature: technologies, image states, gamuts

// The formula of a 'para' function, and its parameters in their order.
const char* FunctionFormula(uint32_t number);

inline bool IsConnectionSpace(uint32_t space) { return space == Number("XYZ ") || space == Number("Lab "); }
bool IsNamedByItsChannelsOnly(uint32_t space);  // '2CLR' ... 'FCLR'
int ChannelsOf(uint32_t space);                 // 0 for no space

// What a bit of a field of flags tells.
struct Flag {
  uint32_t mask;
  const char *clear, *set;
};
std::span<const Flag> HeaderFlags();
std::span<const Flag> DeviceAttributes();

}  // namespace client
