// The formula kernels, each named after what it converts.
#pragma once

#include "qvclr/kernel.h"

namespace qv {

extern const Kernel RGBToBGR, BGRToRGB;
extern const Kernel RGBToCMY, CMYToRGB;
extern const Kernel RGBToCMYK, CMYKToRGB;
extern const Kernel RGBToYUY2, YUY2ToRGB, RGBToUYVY, UYVYToRGB, RGBToY41P, Y41PToRGB;
extern const Kernel RGBToYVU9, YVU9ToRGB;
extern const Kernel RGBToYCbCr, YCbCrToRGB;
extern const Kernel RGBToYIQ, YIQToRGB;
extern const Kernel RGBToYUV, YUVToRGB;
extern const Kernel RGBToXYZ, XYZToRGB;
extern const Kernel RGBToLab, LabToRGB;
extern const Kernel RGBToHSV, HSVToRGB;
extern const Kernel RGBToHLS, HLSToRGB;
extern const Kernel RGBToHSI, HSIToRGB;
extern const Kernel RGBToCMYKProfile, CMYKProfileToRGB;

// By table (RowArgs::table, never null).
extern const Kernel EmuCMYKToRGB, EmuRGBToLab, EmuLabToRGB;

}  // namespace qv
