// The transforms of a converter: from which profiles and for which pixels they are made.
#pragma once

#include "qvclr/converter.h"

namespace qv {

// Each replaces the transform that the converter holds; after a failure it holds none. kUnsupportedColorSpace for a
// pair that the engine does not convert, before anything else is looked at; else as WhiteOf and IccTransform::Make.
//
// From the built-in profiles of both sides. A missing one: the system's error number.
Status MakeBuiltInIcc(ColorConverter* converter);
// From the caller's profiles as the converter holds them: for each side the one in memory, else the file, else the
// built-in one. Without any from the caller, or with a name of no file: kProfileName.
Status MakeCustomIcc(ColorConverter* converter);

// Copies the names and the profiles in memory. A record or profile that is not readable: kBadPointer; one of no bytes:
// kProfileOpen.
Status TakeProfiles(const ConversionParams& params, ColorConverter* converter);
// Copies the names. On a side with a name the file takes the place of a profile in memory.
void TakeProfileNames(const ConversionParams& params, ColorConverter* converter);

}  // namespace qv
