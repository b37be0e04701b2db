// Changes of a live converter.
#pragma once

#include "qvclr/converter.h"

namespace qv {

// Takes over what params.nMethodMask, here a set of QConversionChange bits, selects: in a fixed order, up to the first
// failure. What was changed before it stays; but for want of memory, the copies that this call made go again.
Status ChangeConverter(const ConversionParams& params, ColorConverter* converter);

}  // namespace qv
