// The library's numbers and the words that the command line uses for them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "Qvclr15x.h"

namespace client {

struct Space {
  const char* name;
  uint32_t id;
  uint32_t bits;  // per pixel
  const char* layout;
  const char* size_rule;

  bool Planar() const { return id == CS_YVU9; }
};

struct Method {
  const char* name;
  uint32_t id;
};

const Space& SpaceOf(uint32_t id);
const Space& ParseSpace(const std::string& name_or_number);
const Method& ParseMethod(const std::string& name_or_number);
WhitePointParams ParseWhitePoint(const std::string& name_or_xy);

std::span<const Space> AllSpaces();

// The names to choose from, for help texts: "rgb, yuv, ...".
std::string SpaceNames();
std::string MethodNames();

// "ERR_UNSUPPORTED_COLORSPACE (-785): what it means".
std::string StatusText(int32_t status);

}  // namespace client
