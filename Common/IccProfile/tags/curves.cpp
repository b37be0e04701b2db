// One-dimensional curves.
#include "IccProfile/tags/tags.h"
#include "Qvclr15x.h"

namespace qv {

void DescribeCurve(TagWalk& walk) {
  using T = IccCurveTagType;
  walk.Numbers(4, QV_AT(entryCount));
  walk.Array(2, QV_AT(entries), walk.Number(4, QV_AT(entryCount)));
}

// An unknown function is told by the status of a missing tag when it is read: intended.
void DescribeParametricCurve(TagWalk& walk) {
  using T = IccParametricCurveTagType;
  walk.Numbers(2, QV_AT(functionType));
  walk.Reserved(2, QV_AT(reserved2));
  const uint32_t parameters = walk.Ok() ? ParametersOf(walk.Number(2, QV_AT(functionType))) : 0;
  if (parameters == 0) walk.Fail(walk.Decodes() ? kIccTagNotFound : kInvalidParameter);
  walk.Array(4, QV_AT(parameters), parameters);
}

}  // namespace qv
