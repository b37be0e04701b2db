#include "qvclr/dialog/dialog.h"

#include <windows.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <span>

#include "base/last_error.h"
#include "base/module.h"
#include "qvclr/dialog/trial.h"
#include "qvclr/library.h"
#include "qvclr/params.h"

namespace qv {
namespace {

struct Session {
  Draft* draft;  // as it was given, until the end
  ColorConverter* made;
};

// A line for what is wrong in the fields up to `last`; notes in this order.
struct Note {
  int control, first, last;
};
constexpr Note kNotes[] = {{QV_NOTE_METHOD, QV_METHOD_FIRST, QV_METHOD_LAST},
                           {QV_NOTE_PROFILES, QV_EDIT_SOURCE, QV_EDIT_DEST},
                           {QV_NOTE_TABLE, QV_EDIT_TABLE, QV_EDIT_TABLE},
                           {QV_NOTE_WHITE, QV_EDIT_X, QV_EDIT_Y},
                           {QV_NOTE_NUMBERS, QV_EDIT_BLACK, QV_EDIT_LAST}};

Session& SessionOf(HWND dialog) { return *reinterpret_cast<Session*>(GetWindowLongPtrW(dialog, DWLP_USER)); }

// A translation may lack a string: then the library's own serves.
FieldText String(int number) {
  FieldText text{};
  for (void* module : {TheLibrary().resource_module.load(), OwnModule()}) {
    const auto room = static_cast<int>(text.size());
    if (LoadStringW(static_cast<HINSTANCE>(module), static_cast<UINT>(number), text.data(), room) > 0) break;
  }
  return text;
}

// What a translation has no control for stays as it was given.
Form ReadForm(HWND dialog) {
  Form form = FormOf(*SessionOf(dialog).draft, L'.');
  for (int method = QV_METHOD_FIRST; method <= QV_METHOD_LAST; ++method) {
    if (IsDlgButtonChecked(dialog, method)) form.method = 1u << (method - QV_METHOD_FIRST);
  }
  if (GetDlgItem(dialog, QV_WHITE)) {
    const LRESULT white = SendDlgItemMessageW(dialog, QV_WHITE, CB_GETCURSEL, 0, 0);
    form.white_point = kWhitePoints[white > 0 ? static_cast<size_t>(white) : 0];
  }
  if (GetDlgItem(dialog, QV_ORDER_BGR)) form.blue_first = IsDlgButtonChecked(dialog, QV_ORDER_BGR) != 0;
  for (int edit = QV_EDIT_FIRST; edit <= QV_EDIT_LAST; ++edit) {
    if (!GetDlgItem(dialog, edit)) continue;
    FieldText& text = form.Text(edit);
    text = {};
    GetDlgItemTextW(dialog, edit, text.data(), static_cast<int>(text.size()));
  }
  return form;
}

// With its label, which stands right before it.
void Enable(HWND dialog, int control, bool enabled) {
  const HWND window = GetDlgItem(dialog, control);
  if (!window) return;
  EnableWindow(window, enabled);
  const HWND label = GetWindow(window, GW_HWNDPREV);
  if (label && (SendMessageW(label, WM_GETDLGCODE, 0, 0) & DLGC_STATIC) != 0) EnableWindow(label, enabled);
}

void EnableWhatIsUsed(HWND dialog) {
  const Form form = ReadForm(dialog);
  const Draft& draft = *SessionOf(dialog).draft;
  for (int control = QV_WHITE; control <= QV_BROWSE_TABLE; ++control) {
    Enable(dialog, control, IsUsed(control, form, draft));
  }
  for (const int control : {QV_METHOD_TABLE, QV_METHOD_CUSTOM_TABLE}) {
    EnableWindow(GetDlgItem(dialog, control), IsUsed(control, form, draft));
  }
}

void ClearNotes(HWND dialog) {
  for (const Note& note : kNotes) SetDlgItemTextW(dialog, note.control, L"");
}

void FocusOn(HWND dialog, int control) {
  const HWND window = GetDlgItem(dialog, control);
  if (window) SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(window), TRUE);
}

// At the field, which is selected for another try.
void Tell(HWND dialog, const Fault& fault) {
  const auto covers = [&](const Note& note) { return note.first <= fault.control && fault.control <= note.last; };
  const Note* const note = std::ranges::find_if(kNotes, covers);
  assert(note != std::end(kNotes));
  MessageBeep(MB_ICONWARNING);
  FocusOn(dialog, fault.control);  // first: a method that gets the focus is chosen anew, and the notes are cleared
  SetDlgItemTextW(dialog, note->control, String(fault.text).data());
  if (fault.control >= QV_EDIT_FIRST) SendDlgItemMessageW(dialog, fault.control, EM_SETSEL, 0, -1);
}

void ShowDraft(HWND dialog) {
  const Draft& draft = *SessionOf(dialog).draft;
  wchar_t decimal_mark[5] = L".";
  GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, decimal_mark, static_cast<int>(std::size(decimal_mark)));
  const Form form = FormOf(draft, decimal_mark[0]);
  const int method = QV_METHOD_FIRST + std::countr_zero(form.method);
  CheckRadioButton(dialog, QV_METHOD_FIRST, QV_METHOD_LAST, method);
  CheckRadioButton(dialog, QV_ORDER_RGB, QV_ORDER_BGR, form.blue_first ? QV_ORDER_BGR : QV_ORDER_RGB);
  for (size_t i = 0; i < kWhitePoints.size(); ++i) {
    const FieldText name = String(QV_TEXT_WHITE_FIRST + static_cast<int>(i));
    SendDlgItemMessageW(dialog, QV_WHITE, CB_INSERTSTRING, i, reinterpret_cast<LPARAM>(name.data()));
    if (kWhitePoints[i] == form.white_point) SendDlgItemMessageW(dialog, QV_WHITE, CB_SETCURSEL, i, 0);
  }
  for (int edit = QV_EDIT_FIRST; edit <= QV_EDIT_LAST; ++edit) {
    SendDlgItemMessageW(dialog, edit, EM_LIMITTEXT, std::tuple_size_v<FieldText> - 1, 0);
    SetDlgItemTextW(dialog, edit, form.Text(edit).data());
  }
  if (draft.params.pSourceProfileMemory) SetDlgItemTextW(dialog, QV_EDIT_SOURCE, String(QV_TEXT_IN_MEMORY).data());
  if (draft.params.pDestProfileMemory) SetDlgItemTextW(dialog, QV_EDIT_DEST, String(QV_TEXT_IN_MEMORY).data());
  EnableWhatIsUsed(dialog);
  FocusOn(dialog, method);
}

void Browse(HWND dialog, int button) {
  const int edit = QV_EDIT_SOURCE + button - QV_BROWSE_SOURCE;
  FieldText name{};
  GetDlgItemTextW(dialog, edit, name.data(), static_cast<int>(name.size()));
  const FieldText filter = String(button == QV_BROWSE_TABLE ? QV_TEXT_TABLE_FILTER : QV_TEXT_PROFILE_FILTER);
  if (BrowseForFile(dialog, filter.data(), &name)) SetDlgItemTextW(dialog, edit, name.data());
}

void Accept(HWND dialog) {
  Session& session = SessionOf(dialog);
  if (session.made) return;  // accepted before; the window is about to go
  ClearNotes(dialog);
  Draft draft = *session.draft;
  Fault fault = TakeForm(ReadForm(dialog), &draft);
  if (fault.control == 0) fault = TryDraft(draft, &session.made);
  if (fault.control != 0) return Tell(dialog, fault);
  *session.draft = draft;
  EndDialog(dialog, IDOK);
}

void Command(HWND dialog, int control, int event) {
  switch (control) {
    case IDOK: return Accept(dialog);
    case IDCANCEL: EndDialog(dialog, IDCANCEL); return;
    case QV_BROWSE_SOURCE:
    case QV_BROWSE_DEST:
    case QV_BROWSE_TABLE: return Browse(dialog, control);
    default: break;
  }
  const bool chosen = (control == QV_WHITE && event == CBN_SELCHANGE) ||
                      (control >= QV_METHOD_FIRST && control <= QV_METHOD_LAST && event == BN_CLICKED);
  if (!chosen) return;
  ClearNotes(dialog);
  EnableWhatIsUsed(dialog);
}

INT_PTR CALLBACK DialogProcedure(HWND dialog, UINT message, WPARAM wide, LPARAM session) {
  switch (message) {
    case WM_INITDIALOG:
      ++open_dialogs;
      SetWindowLongPtrW(dialog, DWLP_USER, session);
      ShowDraft(dialog);
      return FALSE;  // the focus is set
    case WM_COMMAND: Command(dialog, LOWORD(wide), HIWORD(wide)); return TRUE;
    case WM_NCDESTROY:
      if (GetWindowLongPtrW(dialog, DWLP_USER) != 0) --open_dialogs;
      // A window that goes with its owner leaves the modal loop waiting for a message.
      PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
      return FALSE;
    default: return FALSE;
  }
}

}  // namespace

Status RunDialog(void* owner, Draft* draft, ColorConverter** made) {
  const int number = EitherIs(CS_LAB, draft->src_space, draft->dst_space) ? QV_DIALOG_LAB : QV_DIALOG_CMYK;
  void* const module = TheLibrary().resource_module.load();
  std::span<const uint8_t> bytes;
  if (const Status status = FindModuleResource(module, "#5", static_cast<uint32_t>(number), &bytes); !Ok(status)) {
    return status;
  }
  Session session{draft, nullptr};
  const INT_PTR end =
      DialogBoxIndirectParamW(static_cast<HINSTANCE>(module), reinterpret_cast<LPCDLGTEMPLATEW>(bytes.data()),
                              static_cast<HWND>(owner), DialogProcedure, reinterpret_cast<LPARAM>(&session));
  if (end == -1) return LastErrorStatus();
  if (!session.made) return kNothingDone;  // also when the window went with its owner
  *made = session.made;
  return kSuccess;
}

}  // namespace qv
