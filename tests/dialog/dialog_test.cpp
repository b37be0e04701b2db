// The settings dialogs, worked by a user at the keyboard.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/memory.h"
#include "dialog/caller.h"
#include "qvclr/dialog/dialog.h"
#include "qvclr/library.h"
#include "support/files.h"
#include "support/system.h"

namespace {

using namespace qv_test;

const std::filesystem::path kRes = QV_RES;
const Folder& Files() {
  static const Folder folder("qvclr dialog");
  return folder;
}
std::filesystem::path Table() {
  static const auto path = Files().Write("table.tif", TiffOf(std::vector<uint8_t>(3 * 17 * 17 * 17 * 17)));
  return path;
}
std::wstring Typed(const std::filesystem::path& path) { return L"{" + path.wstring() + L"}"; }

void SetMethod(Caller& caller, uint32_t method) { caller.params.nActiveMethod = caller.params.nMethodMask = method; }

struct Session {
  const char* what;
  uint32_t src, dst;
  std::wstring keys;
  void (*change)(Caller&);  // what the record becomes
};

const Session kSessions[] = {
    {"nothing but OK", CS_RGB, CS_CMYK, L"", [](Caller&) {}},
    {"formulas, black", CS_RGB, CS_CMYK, L"&f&k{-20}",
     [](Caller& c) { SetMethod(c, METHOD_FORMULA), c.cmyk.nBlackParam = -20; }},
    {"profiles, a white of the list, blue first", CS_CMYK, CS_RGB, L"&p&hvv&u",
     [](Caller& c) { SetMethod(c, METHOD_ICC), c.white.nWhitePoint = 65, c.dst = CS_BGR; }},
    {"a white by its chromaticity, with both decimal marks, red first", CS_BGR, CS_CMYK,
     L"&p&hvvvvv&x{0.3127}\t 0,329 &g",
     [](Caller& c) {
       SetMethod(c, METHOD_ICC), c.white = {0, 0.3127, 0.329}, c.src = CS_RGB;
     }},
    {"custom profiles", CS_RGB, CS_CMYK, L"&c&s" + Typed(kRes / "srgb.icc") + L"&d" + Typed(kRes / "cmyk.icc"),
     [](Caller& c) {
       SetMethod(c, METHOD_CUSTOM_ICC);
       SetName(kRes / "srgb.icc", c.params.sSourceProfileName);
       SetName(kRes / "cmyk.icc", c.params.sDestProfileName);
     }},
    {"one custom profile, for Lab", CS_LAB, CS_RGB, L"&c&d" + Typed(kRes / "srgb.icc"),
     [](Caller& c) { SetMethod(c, METHOD_CUSTOM_ICC), SetName(kRes / "srgb.icc", c.params.sDestProfileName); }},
    {"built-in table", CS_CMYK, CS_RGB, L"&t",
     [](Caller& c) { SetMethod(c, METHOD_TABLE), c.params.nEmulationTableKind = 8; }},
    {"custom table", CS_CMYK, CS_BGR, L"&b&i" + Typed(Table()),
     [](Caller& c) { SetMethod(c, METHOD_CUSTOM_TABLE), SetName(Table(), c.params.sEmulationTableName); }},
    {"automatic for CMYK has a white", CS_RGB, CS_CMYK, L"&a&hvvvv",
     [](Caller& c) { SetMethod(c, METHOD_AUTOMATIC), c.white.nWhitePoint = 93; }},
    {"automatic for Lab has the six values", CS_RGB, CS_LAB, L"&a&1-1\t90\t-2\t80\t-3\t70",
     [](Caller& c) { SetMethod(c, METHOD_AUTOMATIC), c.lab = {sizeof c.lab, 0, -1, 90, -2, 80, -3, 70}; }},
    {"Lab by formula, each value by its access key", CS_LAB, CS_BGR, L"&f&6{66}&5{55}&4{44}&3{33}&2{22}&1{11}",
     [](Caller& c) { SetMethod(c, METHOD_FORMULA), c.lab = {sizeof c.lab, 0, 11, 22, 33, 44, 55, 66}; }},
    {"Lab by profiles and by table", CS_RGB, CS_LAB, L"&t&p", [](Caller& c) { SetMethod(c, METHOD_ICC); }},
    {"arrows among the methods; what was set for another one is left", CS_RGB, CS_CMYK, L"&c&s{nowhere.icc}&p^",
     [](Caller& c) { SetMethod(c, METHOD_FORMULA); }},
    {"a try that was given up", CS_RGB, CS_CMYK, L"&c&s{nowhere.icc}\n&f",
     [](Caller& c) { SetMethod(c, METHOD_FORMULA); }},
    {"tables are not offered where there is none", CS_RGB, CS_CMYK, L"&t&b&i{nowhere.tif}", [](Caller&) {}},
};

TEST(Dialog, FillsTheRecordForEveryMethod) {
  for (const Session& session : kSessions) {
    SCOPED_TRACE(session.what);
    Caller caller(session.src, session.dst), expected = caller;
    session.change(expected);
    ColorConverter* converter = nullptr;
    EXPECT_EQ(WithKeys([&] { return caller.Show(&converter); }, session.keys + L"\n"), SUCCESS);
    EXPECT_TRUE(caller == expected);
    EXPECT_EQ(Q_ClrFree(converter), SUCCESS);
    // What came out opens a dialog that gives it again.
    EXPECT_EQ(WithKeys([&] { return caller.Show(); }, L"\n"), SUCCESS);
    EXPECT_TRUE(caller == expected);

    Caller cancelled(session.src, session.dst);
    const Caller before = cancelled;
    converter = nullptr;
    EXPECT_EQ(WithKeys([&] { return cancelled.Show(&converter); }, session.keys + L"\x1b"), FAILURE);
    EXPECT_TRUE(cancelled == before && !converter);
  }
}

struct Slip {
  const char* what;
  uint32_t src, dst;
  std::wstring keys;
  int field, text, note;
  std::wstring cure;
};

TEST(Dialog, TellsWhatAConverterWouldRefuse) {
  const auto broken = Typed(Files().Write("broken.icc", std::vector<uint8_t>(200)));
  const auto brief = Typed(Files().Write("brief.tif", {'I', 'I', 42, 0}));
  const auto srgb = Typed(kRes / "srgb.icc"), cmyk = Typed(kRes / "cmyk.icc");
  const Slip slips[] = {
      {"no profile", CS_RGB, CS_CMYK, L"&c", QV_EDIT_SOURCE, QV_TEXT_NO_PROFILE_NAMED, QV_NOTE_PROFILES, srgb},
      {"no such file", CS_RGB, CS_CMYK, L"&c&d{none.icc}", QV_EDIT_DEST, QV_TEXT_NO_FILE, QV_NOTE_PROFILES, cmyk},
      {"of another space", CS_RGB, CS_LAB, L"&c&s" + cmyk, QV_EDIT_SOURCE, QV_TEXT_NO_PROFILE, QV_NOTE_PROFILES, srgb},
      {"the second is no profile", CS_RGB, CS_CMYK, L"&c&s" + srgb + L"&d" + broken, QV_EDIT_DEST, QV_TEXT_NO_PROFILE,
       QV_NOTE_PROFILES, cmyk},
      {"no table named", CS_CMYK, CS_RGB, L"&b", QV_EDIT_TABLE, QV_TEXT_NO_FILE, QV_NOTE_TABLE, Typed(Table())},
      {"no table", CS_CMYK, CS_RGB, L"&b&i" + brief, QV_EDIT_TABLE, QV_TEXT_NO_TABLE, QV_NOTE_TABLE, Typed(Table())},
      {"not a number", CS_CMYK, CS_RGB, L"&p&hvvvvv&y{0.3.1}", QV_EDIT_Y, QV_TEXT_NO_NUMBER, QV_NOTE_WHITE, L"0.3"},
      {"no chromaticity", CS_LAB, CS_RGB, L"&p&hvvvvv&x{0.8}&y{0.4}", QV_EDIT_X, QV_TEXT_NO_CHROMATICITY, QV_NOTE_WHITE,
       L"0.3"},
      {"not whole", CS_CMYK, CS_RGB, L"&f&k1.5", QV_EDIT_BLACK, QV_TEXT_NO_WHOLE_NUMBER, QV_NOTE_NUMBERS, L"150"},
      {"too large", CS_LAB, CS_RGB, L"&f&4{2147483648}", QV_EDIT_LAB + 3, QV_TEXT_NO_WHOLE_NUMBER, QV_NOTE_NUMBERS,
       L"9"},
  };
  for (const Slip& slip : slips) {
    SCOPED_TRACE(slip.what);
    Caller caller(slip.src, slip.dst);
    const Caller before = caller;
    const auto work = [&](const User& user) {
      user.Press(slip.keys + L"\n");
      ASSERT_TRUE(IsWindow(user.Window())) << slip.what;
      EXPECT_EQ(user.Focus(), slip.field);
      EXPECT_EQ(user.Text(slip.note), String(slip.text));
      EXPECT_TRUE(caller == before);
      user.Press(slip.cure + L"\n");  // takes the place of what was typed
    };
    EXPECT_EQ(WithUser([&] { return caller.Show(); }, work), SUCCESS);
    EXPECT_FALSE(caller == before);
  }
}

TEST(Dialog, BrowsesForProfiles) {
  wchar_t path[300] = L"";
  GetFullPathNameW((kRes / "srgb.icc").wstring().c_str(), static_cast<DWORD>(std::size(path)), path, nullptr);
  Caller caller(CS_RGB, CS_CMYK);
  const auto work = [&](const User& user) {
    user.Press(L"&c&r");
    const User files = DialogOver(user);
    EXPECT_NE(files.Text(0x470).find(L"*.icc"), std::wstring::npos) << "the list of filters";
    files.Press(Typed(path) + L"\n");
    while (!IsWindowEnabled(user.Window())) Sleep(1);
    EXPECT_EQ(user.Text(QV_EDIT_SOURCE), path);
    user.Press(L"&w");
    DialogOver(user).Press(L"\x1b");
    while (!IsWindowEnabled(user.Window())) Sleep(1);
    EXPECT_EQ(user.Text(QV_EDIT_DEST), L"");
    user.Press(L"&s\n");
  };
  EXPECT_EQ(WithUser([&] { return caller.Show(); }, work), SUCCESS);
  EXPECT_EQ(std::wstring(caller.params.sSourceProfileName), path);
}

TEST(Dialog, LeavesOutWhatTheCallerDidNotGive) {
  const auto profile = ReadResource("srgb.icc");
  const IccMemoryProfile memory = {sizeof memory, profile.data(), static_cast<uint32_t>(profile.size())};
  Caller caller(CS_RGB, CS_CMYK);
  caller.params.pSourceProfileMemory = &memory;
  caller.params.pWhitePoint = nullptr;
  caller.params.pCmykParams = nullptr;
  Caller expected = caller;
  SetMethod(expected, METHOD_CUSTOM_ICC);
  const auto work = [](const User& user) {
    user.Press(L"&f");
    EXPECT_FALSE(user.IsEnabled(QV_EDIT_BLACK) || user.IsEnabled(QV_EDIT_DEST));
    user.Press(L"&c");
    EXPECT_FALSE(user.IsEnabled(QV_EDIT_SOURCE) || user.IsEnabled(QV_BROWSE_SOURCE) || user.IsEnabled(QV_WHITE));
    EXPECT_TRUE(user.IsEnabled(QV_EDIT_DEST) && !user.Text(QV_EDIT_SOURCE).empty());
    user.Press(L"\n");
  };
  EXPECT_EQ(WithUser([&] { return caller.Show(); }, work), SUCCESS);
  EXPECT_TRUE(caller == expected);
}

TEST(Dialog, SpeaksNarrowNames) {
  Caller caller(CS_RGB, CS_CMYK);
  caller.narrow.nActiveMethod = caller.narrow.nMethodMask = METHOD_FORMULA;
  std::strcpy(caller.narrow.sDestProfileName, (kRes / "cmyk.icc").string().c_str());
  std::memset(caller.narrow.sEmulationTableName, 'x', 260);  // no terminator: stays
  Caller expected = caller;
  expected.narrow.nActiveMethod = expected.narrow.nMethodMask = METHOD_CUSTOM_ICC;
  std::strcpy(expected.narrow.sSourceProfileName, (kRes / "srgb.icc").string().c_str());
  const auto foreign = Files().Write("plain.icc", ReadResource("srgb.icc"));
  const auto renamed = foreign.parent_path() / L"\x4E2D.icc";
  std::filesystem::copy_file(foreign, renamed);
  const auto work = [&](const User& user) {
    EXPECT_EQ(user.Text(QV_EDIT_DEST), (kRes / "cmyk.icc").wstring());
    user.Press(L"&c&s" + Typed(renamed) + L"\n");
    if (GetACP() != CP_UTF8) EXPECT_EQ(user.Focus(), QV_EDIT_SOURCE);
    if (IsWindow(user.Window())) user.Press(Typed(kRes / "srgb.icc") + L"\n");
  };
  EXPECT_EQ(WithUser([&] { return caller.ShowNarrow(); }, work), SUCCESS);
  EXPECT_TRUE(caller == expected);
}

TEST(Dialog, RefusesArgumentsBeforeItShows) {
  Caller good(CS_RGB, CS_CMYK);
  GuardedBuffer page(sizeof(ConversionParams));
  std::memcpy(page.data(), &good.params, page.size());
  page.MakeReadOnly();
  void* const fixed = page.data();
  ColorConverter* converter = nullptr;
  uint32_t *src = &good.src, *dst = &good.dst;
  const auto status_of = [&](auto change) {
    Caller caller(CS_RGB, CS_CMYK);
    change(caller);
    return caller.Show();
  };
  EXPECT_EQ(Q_ClrDlg(nullptr, &converter, nullptr, dst, &good.params), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrDlg(nullptr, &converter, src, nullptr, &good.params), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrDlg(nullptr, &converter, src, dst, nullptr), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrDlg(reinterpret_cast<void*>(0x7777777), nullptr, src, dst, &good.params), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrDlg(nullptr, static_cast<ColorConverter**>(fixed), src, dst, &good.params), ERR_BAD_POINTER);
  EXPECT_EQ(Q_ClrDlg(nullptr, nullptr, static_cast<uint32_t*>(fixed), dst, &good.params), ERR_BAD_POINTER);
  EXPECT_EQ(Q_ClrDlg(nullptr, nullptr, src, dst, static_cast<ConversionParams*>(fixed)), ERR_BAD_POINTER);
  EXPECT_EQ(status_of([](Caller& c) { c.params.uStructSize = 880; }), ERR_INV_STRUCT_SIZE);
  EXPECT_EQ(status_of([](Caller& c) { c.dst = CS_HSV; }), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(status_of([](Caller& c) { c.src = CS_LAB; }), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(status_of([](Caller& c) { c.dst = CS_BGR; }), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(status_of([&](Caller& c) { c.params.pWhitePoint = static_cast<WhitePointParams*>(fixed); }),
            ERR_BAD_POINTER);
  EXPECT_EQ(status_of([&](Caller& c) { c.params.pCmykParams = static_cast<CmykParams*>(fixed); }), ERR_BAD_POINTER);
  EXPECT_EQ(status_of([&](Caller& c) { c.cmyk.uStructSize = 0; }), ERR_INV_STRUCT_SIZE);
  EXPECT_EQ(status_of([&](Caller& c) { c.dst = CS_LAB, c.lab.uStructSize = 0; }), ERR_INV_STRUCT_SIZE);
}

TEST(Dialog, IsReadFromTheResourceModule) {
  void* const own = qv::TheLibrary().resource_module.load();
  void* const satellite = LoadModule(kSatellite);
  Caller caller(CS_RGB, CS_CMYK), lab(CS_RGB, CS_LAB);
  SetResModule(satellite);
  const auto work = [](const User& user) {
    wchar_t title[80] = L"";
    GetWindowTextW(user.Window(), title, 80);
    EXPECT_STREQ(title, L"\x05D4\x05DE\x05E8\x05EA CMYK");
    EXPECT_TRUE(GetWindowLongPtrW(user.Window(), GWL_EXSTYLE) & WS_EX_LAYOUTRTL);
    user.Press(L"&k{1,2}\n");
    EXPECT_EQ(user.Text(QV_NOTE_NUMBERS), L"\x05DE\x05E1\x05E4\x05E8 \x05E9\x05DC\x05DD");
    user.Press(L"{12}\n");
  };
  EXPECT_EQ(WithUser([&] { return SetMethod(caller, METHOD_FORMULA), caller.Show(); }, work), SUCCESS);
  EXPECT_EQ(caller.cmyk.nBlackParam, 12);
  Caller bare(CS_CMYK, CS_BGR);
  SetMethod(bare, METHOD_TABLE);
  const Caller before = bare;
  EXPECT_EQ(WithKeys([&] { return bare.Show(); }, L"\n"), SUCCESS);
  EXPECT_TRUE(bare == before) << "what the translation has no control for";
  SetResModule(own);
  const auto lose_profiles = [&](const User& user) {
    SetResModule(satellite);
    user.Press(L"&p\n");
    EXPECT_EQ(user.Focus(), QV_METHOD_ICC);
    EXPECT_EQ(user.Text(QV_NOTE_METHOD), String(QV_TEXT_NO_METHOD)) << "what the translation lacks";
  };
  EXPECT_EQ(WithUser([&] { return caller.Show(); }, lose_profiles), FAILURE);
  EXPECT_EQ(lab.Show(), ERROR_RESOURCE_NAME_NOT_FOUND) << "a template that the module lacks";
  SetResModule(own);
  UnloadModule(satellite);
}

TEST(Dialog, GoesWithItsOwner) {
  const HWND owner =
      CreateWindowW(L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 99, 99, nullptr, nullptr, nullptr, nullptr);
  Caller caller(CS_RGB, CS_LAB);
  const Caller before = caller;
  const auto show = [&] { return Q_ClrDlg(owner, nullptr, &caller.src, &caller.dst, &caller.params); };
  const auto close = [&](const User& user) {
    EXPECT_EQ(GetWindow(user.Window(), GW_OWNER), owner);
    SendMessageW(owner, WM_CLOSE, 0, 0);
  };
  EXPECT_EQ(WithUser(show, close), FAILURE);
  EXPECT_TRUE(caller == before);
  EXPECT_FALSE(IsWindow(owner));
}

TEST(Dialog, LeavesNothingBehind) {
  struct Held {
    DWORD handles = 0, gdi = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS),
          user = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    size_t blocks = qv::Ledger().blocks;
    Held() { GetProcessHandleCount(GetCurrentProcess(), &handles); }
  };
  const auto open = [](int i) {
    Caller caller(CS_RGB, i % 2 ? CS_CMYK : CS_LAB);
    SetMethod(caller, METHOD_FORMULA);
    return WithKeys([&] { return caller.Show(); }, i % 4 < 2 ? L"\n" : L"\x1b");
  };
  for (int i = 0; i < 4; ++i) open(i);  // what the system keeps after the first time
  const Held before;
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(open(i), i % 4 < 2 ? SUCCESS : FAILURE);
  const Held after;
  EXPECT_EQ(after.handles, before.handles);
  EXPECT_EQ(after.gdi, before.gdi);
  EXPECT_EQ(after.user, before.user);
  EXPECT_EQ(after.blocks, before.blocks);
  EXPECT_EQ(qv::open_dialogs, 0);
}

}  // namespace
