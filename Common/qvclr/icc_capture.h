// Finds what the engine evaluates in a transform, a grid or curves and a matrix, and makes one of the library's own of
// it.
#pragma once

#include <lcms2.h>

#include "base/status.h"

namespace qv {

struct IccGrid;
struct IccShaper;

// All within Engine::Enter. The context's transforms can be looked into when they are made after this.
void PrepareCapture(cmsContext context);

// Leaves `quads` null unless the transform's whole work is one interpolation, which the grid then gives the same bytes
// as: shown by the rounding of the engine's interpolation and by several thousand pixels. kNoMemory.
Status CaptureGrid(cmsContext context, cmsHTRANSFORM transform, IccGrid* grid);

// Completes what FillShaper left while the transform was made. The kind becomes kNone unless several thousand pixels
// come out as the engine's.
void CaptureShaper(cmsHTRANSFORM transform, IccShaper* shaper);

}  // namespace qv
