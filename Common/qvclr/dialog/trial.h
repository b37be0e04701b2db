// Whether settings serve: a converter is made from them, and what refuses it is told as a fault of a field.
#pragma once

#include "qvclr/dialog/form.h"

namespace qv {

// Stores the converter where no fault is found.
Fault TryDraft(const Draft& draft, ColorConverter** made);

}  // namespace qv
