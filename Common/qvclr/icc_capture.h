// Finds the grid that the engine evaluates in a transform, and makes one of the library's own of it.
#pragma once

#include <lcms2.h>

#include "base/status.h"

namespace qv {

struct IccGrid;

// Both within Engine::Enter. The context's transforms can be looked into when they are made after this.
void PrepareCapture(cmsContext context);

// Leaves `quads` null unless the transform's whole work is one interpolation, which the grid then gives the same bytes
// as: shown by the rounding of the engine's interpolation and by several thousand pixels. kNoMemory.
Status CaptureGrid(cmsContext context, cmsHTRANSFORM transform, IccGrid* grid);

}  // namespace qv
