// The catalogue of colour spaces: one line each, read by dispatch, size checks, tests, benchmarks and documents.
#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"

namespace qv {

struct Kernel;

enum class SizeRule : uint8_t {
  kNone,
  kWidthEven,
  kWidthOf8,
  kBothOf4,
};

struct Space {
  uint32_t id;
  const char* name;
  uint8_t bits;  // per pixel
  SizeRule rule;
  const Kernel* to_rgb;
  const Kernel* from_rgb;
  uint32_t icc_format = 0;   // the engine's pixel format, of as many bits; 0: not converted by ICC
  uint32_t icc_profile = 0;  // number of the built-in profile
  bool planar = false;
};

std::span<const Space> AllSpaces();
const Space* FindSpace(uint32_t id);  // null for an unknown one

constexpr bool IsRgb(uint32_t id) { return id == CS_RGB || id == CS_BGR; }
constexpr bool IsRgb(const Space& space) { return IsRgb(space.id); }

// kInvalidWidthAlignment or kInvalidYuv9Size when the space does not take such a frame.
Status CheckSize(const Space& space, int32_t width, int32_t height);

}  // namespace qv
