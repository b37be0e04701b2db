// What the dialogs look like: no text is cut off, no key means two things. Pictures go to the working folder.
#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "dialog/caller.h"
#include "qvclr/dialog/resource_ids.h"

namespace {

using namespace qv_test;

std::wstring TextOf(HWND window) {
  wchar_t text[300] = L"";
  GetWindowTextW(window, text, static_cast<int>(std::size(text)));
  return text;
}

void ExpectFits(HWND control, const std::wstring& text, LONG frame) {
  const HDC context = GetDC(control);
  const HGDIOBJ old = SelectObject(context, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
  RECT room, needed{};
  GetClientRect(control, &room);
  DrawTextW(context, text.c_str(), -1, &needed, DT_CALCRECT | DT_SINGLELINE);
  SelectObject(context, old);
  ReleaseDC(control, context);
  EXPECT_LE(needed.right + frame, room.right) << testing::PrintToString(text);
  EXPECT_LE(needed.bottom, room.bottom) << testing::PrintToString(text);
}

// Twice the frame of a push button, the mark of a radio button, the arrow of a list.
LONG FrameOf(HWND control) {
  const auto type = GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK;
  const LRESULT code = SendMessageW(control, WM_GETDLGCODE, 0, 0);
  if (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) return 2 * 4;
  return code & DLGC_RADIOBUTTON || type == BS_GROUPBOX ? GetSystemMetrics(SM_CXMENUCHECK) + 4 : 0;
}

void SavePicture(HWND window, const std::string& name) {
  RECT area;
  GetWindowRect(window, &area);
  const LONG width = area.right - area.left, height = area.bottom - area.top;
  BITMAPINFOHEADER header = {sizeof header, width, height, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
  const auto line = static_cast<size_t>((width * 3 + 3) / 4 * 4);
  const HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen);
  void* bits = nullptr;
  const HBITMAP bitmap =
      CreateDIBSection(memory, reinterpret_cast<BITMAPINFO*>(&header), DIB_RGB_COLORS, &bits, nullptr, 0);
  const HGDIOBJ old = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
  GdiFlush();
  std::ofstream picture(name, std::ios::binary);  // as PPM
  picture << "P6\n" << width << ' ' << height << "\n255\n";
  for (LONG y = height; y-- > 0;) {
    const auto* pixel = static_cast<const char*>(bits) + static_cast<size_t>(y) * line;
    for (LONG x = 0; x < width; ++x, pixel += 3) picture.put(pixel[2]).put(pixel[1]).put(pixel[0]);
  }
  SelectObject(memory, old);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
}

void Judge(const User& user, const std::string& name) {
  std::map<wchar_t, int> keys;
  for (HWND control = GetWindow(user.Window(), GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT)) {
    const std::wstring text = TextOf(control);
    const int number = GetDlgCtrlID(control);
    if (number < QV_EDIT_FIRST || number > QV_EDIT_LAST) ExpectFits(control, text, FrameOf(control));
    if (const size_t mark = text.find(L'&'); mark != std::wstring::npos) ++keys[towlower(text[mark + 1])];
    for (int note = QV_TEXT_NO_FILE; number >= QV_NOTE_METHOD && note <= QV_TEXT_NO_METHOD; ++note) {
      ExpectFits(control, String(note), 0);
    }
  }
  for (const auto& [key, count] : keys) EXPECT_EQ(count, 1) << static_cast<char>(key);
  EXPECT_GE(keys.size(), 16u);
  ExpectFits(user.Control(QV_EDIT_SOURCE), String(QV_TEXT_IN_MEMORY), 2);
  for (int white = QV_TEXT_WHITE_FIRST; white < QV_TEXT_WHITE_FIRST + 6; ++white) {
    ExpectFits(user.Control(QV_WHITE), String(white), GetSystemMetrics(SM_CXVSCROLL) + 8);
  }
  user.Press(L"&p&hvvvvv&x0,9\n");  // with a note
  UpdateWindow(user.Window());
  Sleep(200);
  const HDC screen = GetDC(nullptr);
  const int percent = GetDeviceCaps(screen, LOGPIXELSX) * 100 / 96;
  ReleaseDC(nullptr, screen);
  SavePicture(user.Window(), "dialog_" + name + "_" + std::to_string(percent) + ".ppm");
  user.Press(L"\x1b");
}

TEST(DialogLayout, CutsNothingOff) {
  Caller cmyk(CS_RGB, CS_CMYK), lab(CS_RGB, CS_LAB);
  WithUser([&] { return cmyk.Show(); }, [](const User& user) { Judge(user, "cmyk"); });
  WithUser([&] { return lab.Show(); }, [](const User& user) { Judge(user, "lab"); });
}

}  // namespace
