#include "dialog/user.h"

#include <atomic>
#include <semaphore>
#include <thread>

namespace qv_test {
namespace {

constexpr UINT kMark = WM_APP + 1;  // does nothing, but shows that what was posted before it is done
std::counting_semaphore<> marks{0};

LRESULT CALLBACK WatchForMarks(int code, WPARAM removed, LPARAM message) {
  if (code == HC_ACTION && removed == PM_REMOVE && reinterpret_cast<MSG*>(message)->message == kMark) marks.release();
  return CallNextHookEx(nullptr, code, removed, message);
}

BOOL CALLBACK KeepDialog(HWND window, LPARAM found) {
  wchar_t name[16] = L"";
  GetClassNameW(window, name, static_cast<int>(std::size(name)));
  if (!IsWindowVisible(window) || !IsWindowEnabled(window) || std::wstring_view(name) != L"#32770") return TRUE;
  *reinterpret_cast<HWND*>(found) = window;
  return FALSE;
}

// Null when `ended` before there is one.
HWND AwaitDialog(DWORD thread, const std::atomic<bool>& ended) {
  HWND dialog = nullptr;
  while (!dialog && !ended) {
    EnumThreadWindows(thread, KeepDialog, reinterpret_cast<LPARAM>(&dialog));
    if (!dialog) Sleep(1);
  }
  return dialog;
}

}  // namespace

HWND User::Focused() const {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(dialog_, nullptr), &info);
  return info.hwndFocus ? info.hwndFocus : dialog_;
}

std::wstring User::Text(int number) const {
  wchar_t text[300] = L"";
  GetDlgItemTextW(dialog_, number, text, static_cast<int>(std::size(text)));
  return text;
}

void User::Post(UINT message, wchar_t key) const {
  PostMessageW(Focused(), message, key, 1);
  PostMessageW(dialog_, kMark, 0, 0);
  while (!marks.try_acquire_for(std::chrono::milliseconds(2)) && IsWindow(dialog_)) continue;  // a key may end it
}

void User::Press(std::wstring_view keys) const {
  bool verbatim = false;
  for (size_t i = 0; i < keys.size(); ++i) {
    const wchar_t key = keys[i];
    if (key == L'{' || key == L'}') {
      verbatim = key == L'{';
    } else if (verbatim) {
      Post(WM_CHAR, key);
    } else {
      switch (key) {
        case L'&': Post(WM_SYSCHAR, keys[++i]); break;
        case L'\n': Post(WM_KEYDOWN, VK_RETURN); break;
        case L'\t': Post(WM_KEYDOWN, VK_TAB); break;
        case L'\x1b': Post(WM_KEYDOWN, VK_ESCAPE); break;
        case L'^': Post(WM_KEYDOWN, VK_UP); break;
        case L'v': Post(WM_KEYDOWN, VK_DOWN); break;
        default: Post(WM_CHAR, key);
      }
    }
  }
}

std::wstring String(int number) {
  wchar_t text[300] = L"";
  LoadStringW(nullptr, static_cast<UINT>(number), text, static_cast<int>(std::size(text)));
  return text;
}

User DialogOver(const User& user) {
  return User(AwaitDialog(GetWindowThreadProcessId(user.Window(), nullptr), std::atomic<bool>{false}));
}

int WithUser(const std::function<int()>& open, const std::function<void(const User&)>& act) {
  const DWORD thread = GetCurrentThreadId();
  std::atomic<bool> ended{false};
  const HHOOK hook = SetWindowsHookExW(WH_GETMESSAGE, WatchForMarks, nullptr, thread);
  std::jthread user([&] {
    const HWND dialog = AwaitDialog(thread, ended);
    if (!dialog) return;
    act(User(dialog));
    if (!ended && IsWindow(dialog)) SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);  // a user who was stuck
  });
  const int result = open();
  ended = true;
  user.join();
  UnhookWindowsHookEx(hook);
  while (marks.try_acquire()) continue;
  return result;
}

}  // namespace qv_test
