// Reference whites of the profile connection space, and their abstract profile.
#pragma once

#include <lcms2.h>

#include <optional>

#include "base/status.h"

namespace qv {

// XYZ with Y = 1; nothing for D50, the connection space's own.
using WhitePoint = std::optional<cmsCIEXYZ>;

// The white of a record. kInvalidParameter for a custom point that is no chromaticity, or so near to X = 0 or Z = 0
// that nothing can be rescaled by it.
Status WhiteOf(const WhitePointParams& params, WhitePoint* white);

// A profile that rescales XYZ relative to D50 by D50 / white, component by component, as CIELAB normalises; or, the
// other way, by white / D50. `next` is the profile that follows it. Within Engine::Enter.
enum class WhiteDirection : uint8_t { kToWhite, kFromWhite };
cmsHPROFILE MakeWhitePointProfile(cmsContext context, const cmsCIEXYZ& white, WhiteDirection direction,
                                  cmsHPROFILE next);

}  // namespace qv
