// Reference whites of the profile connection space, and their abstract profile.
#pragma once

#include "base/status.h"
#include "qvclr/icc_engine.h"

namespace qv {

// XYZ with Y = 1 of a record's white. kInvalidParameter for a custom point that is no chromaticity.
Status WhiteOf(const WhitePointParams& params, cmsCIEXYZ* white);
constexpr bool IsD50(const WhitePointParams& params) {
  const uint32_t point = params.nWhitePoint;
  return point != 0 && point != 55 && point != 65 && point != 75 && point != 93;
}

// A profile that rescales XYZ relative to D50 by D50 / white, component by component, as CIELAB normalises; or, the
// other way, by white / D50. Null without memory.
enum class WhiteDirection : uint8_t { kToWhite, kFromWhite };
EngineProfile MakeWhitePointProfile(cmsContext context, const cmsCIEXYZ& white, WhiteDirection direction);

}  // namespace qv
