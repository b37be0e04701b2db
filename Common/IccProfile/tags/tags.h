// The tag types, each described once: see tag_walk.h.
#pragma once

#include <cstddef>

#include "IccProfile/tag_walk.h"

#define QV_AT(field) offsetof(T, field)  // T: the structure of the type

namespace qv {

void DescribeRaw(TagWalk& walk);
template <size_t kWidth, size_t kGroup>
void DescribeNumberArray(TagWalk& walk);
void DescribeSignature(TagWalk& walk);
void DescribeDateTime(TagWalk& walk);
void DescribeViewingConditions(TagWalk& walk);
void DescribeMeasurement(TagWalk& walk);
void DescribeText(TagWalk& walk);
void DescribeData(TagWalk& walk);
void DescribeMultiLocalized(TagWalk& walk);
void DescribeCurve(TagWalk& walk);
void DescribeParametricCurve(TagWalk& walk);
template <size_t kWidth>
void DescribeLut(TagWalk& walk);
void DescribeLutAToB(TagWalk& walk);
void DescribeLutBToA(TagWalk& walk);
void DescribeChromaticity(TagWalk& walk);
void DescribeColorantOrder(TagWalk& walk);
void DescribeColorantTable(TagWalk& walk);
void DescribeNamedColors(TagWalk& walk);
void DescribeProfileSequence(TagWalk& walk);
void DescribeResponseCurves(TagWalk& walk);

// Of a parametric function; 0 for an unknown one.
constexpr uint32_t ParametersOf(uint64_t function_type) {
  constexpr uint32_t kParameters[] = {1, 3, 4, 5, 7};
  return function_type < 5 ? kParameters[function_type] : 0;
}

// Numbers of a table of so many dimensions; above 32 bits it is UINT64_MAX.
constexpr uint64_t TimesWithin32Bits(uint64_t a, uint64_t b) {
  return a <= UINT32_MAX && b <= UINT32_MAX && a * b <= UINT32_MAX ? a * b : UINT64_MAX;
}

}  // namespace qv
