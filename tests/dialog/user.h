// A user at the keyboard: acts on a modal dialog while the thread that opened it waits.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

namespace qv_test {

class User {
 public:
  explicit User(HWND dialog) : dialog_(dialog) {}

  // Presses keys, each when the one before has done its work: '&' and a letter is an access key, '\n' Enter, '\x1b'
  // Escape, '\t' Tab, '^' and 'v' the arrows up and down; "{...}" is typed as it stands, and so is any other character.
  void Press(std::wstring_view keys) const;

  HWND Window() const { return dialog_; }
  HWND Control(int number) const { return GetDlgItem(dialog_, number); }
  int Focus() const { return GetDlgCtrlID(Focused()); }
  std::wstring Text(int number) const;
  bool IsEnabled(int number) const { return IsWindowEnabled(Control(number)) != FALSE; }

 private:
  HWND Focused() const;
  void Post(UINT message, wchar_t key) const;

  HWND dialog_;
};

std::wstring String(int number);  // of this program's resources

// The dialog that opens over the user's.
User DialogOver(const User& user);

// Calls `open`, which shows a dialog, and `act` on another thread as soon as it is there. Gives the result of `open`.
int WithUser(const std::function<int()>& open, const std::function<void(const User&)>& act);
inline int WithKeys(const std::function<int()>& open, std::wstring_view keys) {
  return WithUser(open, [keys](const User& user) { user.Press(keys); });
}

}  // namespace qv_test
