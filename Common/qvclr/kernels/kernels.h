// The formula kernels, each named after what it converts.
#pragma once

#include "qvclr/kernel.h"

namespace qv {

extern const Kernel RGBToBGR, BGRToRGB;
extern const Kernel RGBToCMY, CMYToRGB;
extern const Kernel RGBToCMYK, CMYKToRGB;

}  // namespace qv
