// A program that shows the settings dialog: its record with all sub-records.
#pragma once

#include <cstring>

#include "dialog/user.h"
#include "support/converters.h"

namespace qv_test {

// A copy is for comparison only: it points to the sub-records of the original.
struct Caller {
  uint32_t src, dst;
  WhitePointParams white = {50, 0.25, 0.5};
  CmykParams cmyk = {sizeof cmyk, 175, 0};
  LabParams lab = {sizeof lab, 0, 1, 2, 3, 4, 5, 6};
  ConversionParams params = Params(METHOD_ICC);
  ConversionParamsA narrow{};

  Caller(uint32_t src_space, uint32_t dst_space) : src(src_space), dst(dst_space) {
    params.pWhitePoint = narrow.pWhitePoint = &white;
    params.pCmykParams = narrow.pCmykParams = &cmyk;
    params.pLabParams = narrow.pLabParams = &lab;
  }
  bool operator==(const Caller& other) const { return std::memcmp(this, &other, sizeof other) == 0; }

  int Show(ColorConverter** converter = nullptr) { return Q_ClrDlg(nullptr, converter, &src, &dst, &params); }
  int ShowNarrow() { return Q_ClrDlgA(nullptr, nullptr, &src, &dst, &narrow); }
};

}  // namespace qv_test
