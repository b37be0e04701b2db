// The settings dialog without its window: what its fields show of a record, and the record that they give.
#pragma once

#include <array>
#include <cstddef>

#include "Qvclr15x.h"
#include "qvclr/dialog/resource_ids.h"

namespace qv {

// What is being set up. Copies of the sub-records that the caller gave; the others stay as they are and are not shown.
struct Draft {
  uint32_t src_space, dst_space;
  ConversionParams params;  // its pointers are the caller's
  WhitePointParams white_point;
  CmykParams cmyk;
  LabParams lab;
  bool narrow_names;  // the caller takes names of narrow characters only
};

// Either side is CS_CMYK or CS_LAB, the other one CS_RGB or CS_BGR.
bool HasDialog(uint32_t src_space, uint32_t dst_space);

// What the controls hold.
using FieldText = std::array<QWChar, 260>;
struct Form {
  uint32_t method;       // one bit of QMethod
  uint32_t white_point;  // as in WhitePointParams
  bool blue_first;
  std::array<FieldText, QV_EDIT_LAST - QV_EDIT_FIRST + 1> texts;

  FieldText& Text(int edit) { return texts[static_cast<size_t>(edit - QV_EDIT_FIRST)]; }
  const FieldText& Text(int edit) const { return texts[static_cast<size_t>(edit - QV_EDIT_FIRST)]; }
};

inline constexpr std::array<uint32_t, 6> kWhitePoints = {50, 55, 65, 75, 93, 0};  // as they are listed

// A control that holds something wrong, and the string that says what; zeros where all is well.
struct Fault {
  int control = 0, text = 0;
};

// A method that the pair lacks is shown as the formulas, which then convert; numbers with the user's decimal mark where
// that is a comma, else with a point: these two are read.
Form FormOf(const Draft& draft, QWChar decimal_mark);

// Whether the pair, the method and what the caller gave leave the control something to set.
bool IsUsed(int control, const Form& form, const Draft& draft);

// Takes over what is used; everything else stays. Whether files and numbers serve a converter is not looked at.
Fault TakeForm(const Form& form, Draft* draft);

}  // namespace qv
