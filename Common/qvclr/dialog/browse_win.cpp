#include <windows.h>
#include <commdlg.h>

#include "base/files.h"
#include "qvclr/dialog/dialog.h"

namespace qv {

// The system's library of common dialogs brings half the shell with it: it is loaded by those who browse.
bool BrowseForFile(void* owner, const QWChar* filter, FieldText* name) {
  FieldText patterns{};
  for (size_t i = 0; filter[i] != 0 && i + 2 < patterns.size(); ++i)
    patterns[i] = filter[i] == L'|' ? L'\0' : filter[i];
  const HMODULE dialogs = LoadLibraryExW(L"comdlg32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (!dialogs) return false;
  bool chosen = false;
  const auto address = reinterpret_cast<void*>(GetProcAddress(dialogs, "GetOpenFileNameW"));
  if (const auto get_open_file_name = reinterpret_cast<decltype(&GetOpenFileNameW)>(address)) {
    FieldText shown{};
    if (File::Exists(name->data())) shown = *name;  // it does not open with what is no file name
    OPENFILENAMEW request{};
    request.lStructSize = sizeof request;
    request.hwndOwner = static_cast<HWND>(owner);
    request.lpstrFilter = patterns.data();
    request.lpstrFile = shown.data();
    request.nMaxFile = static_cast<DWORD>(shown.size());
    request.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    chosen = get_open_file_name(&request) != FALSE;
    if (chosen) *name = shown;
  }
  FreeLibrary(dialogs);
  return chosen;
}

}  // namespace qv
