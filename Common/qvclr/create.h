// Making converters.
#pragma once

#include "qvclr/converter.h"

namespace qv {

// The checks and steps behind Q_ClrInit; the handle is stored only on success. `params` may be null.
Status CreateConverter(uint32_t src_space, uint32_t dst_space, const ConversionParams* params, ColorConverter** handle);

}  // namespace qv
