// The path of the pixels: a copy, the colour engine, or the formula kernels.
#pragma once

#include "qvclr/converter.h"
#include "qvclr/frame.h"

namespace qv {

// The buffers have been tested by the entry.
Status ConvertByConverter(const ColorConverter& converter, const Frame& in, const uint8_t* src, const Frame& out,
                          uint8_t* dst);

// By formula and without a converter; tests the size rules, the buffers, and the paddings in place.
Status ConvertDirect(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst);

}  // namespace qv
