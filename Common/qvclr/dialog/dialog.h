// The settings dialog on the screen.
#pragma once

#include <atomic>

#include "base/status.h"
#include "qvclr/dialog/form.h"

namespace qv {

// Shows the dialog for the draft's pair until its user is done. kSuccess: the settings are in the draft, and `*made` is
// a converter that was made from them. kNothingDone: cancelled. A template that the resource module lacks: the system's
// error number.
Status RunDialog(void* owner, Draft* draft, ColorConverter** made);

// Lets the user choose among existing files; `filter` holds names and patterns in turn, a bar behind each. False when
// cancelled.
bool BrowseForFile(void* owner, const QWChar* filter, FieldText* name);

// Dialog windows begun and not yet gone; tests look at it.
inline constinit std::atomic<int32_t> open_dialogs{0};

}  // namespace qv
