// Memory, texts and handles as Windows has them.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "base/readable.h"
#include "base/text.h"
#include "unit/base_system.h"

size_t qv_test::OpenHandles() {
  DWORD handles = 0;
  GetProcessHandleCount(GetCurrentProcess(), &handles);
  return handles;
}

namespace {
using namespace qv;
using namespace std::string_literals;

std::pair<bool, std::wstring> Widened(std::string_view text, size_t units) {
  std::wstring wide(units, L'?');
  const bool fits = WideFromNarrow(text, wide);
  return {fits, wide};
}

TEST(ReadableOnWindows, RefusesGuardPagesAndReservedPages) {
  auto* pages = static_cast<char*>(VirtualAlloc(nullptr, 0x5000, MEM_RESERVE, PAGE_READWRITE));
  DWORD old = 0;
  ASSERT_TRUE(VirtualAlloc(pages, 0x3000, MEM_COMMIT, PAGE_READWRITE));
  ASSERT_TRUE(VirtualProtect(pages + 0x1000, 0x1000, PAGE_READWRITE | PAGE_GUARD, &old));
  EXPECT_TRUE(IsWritable(pages, 0x1000) && IsWritable(pages + 0x2000, 0x1000));
  for (const auto& [offset, size] :
       {std::pair{0x1800u, 1u}, {0u, 0x1001u}, {0u, 0x3000u}, {0x2000u, 0x1001u}, {0x4000u, 1u}}) {
    EXPECT_FALSE(IsReadable(pages + offset, size) || IsWritable(pages + offset, size)) << offset;
  }
  EXPECT_TRUE(VirtualProtect(pages + 0x1000, 0x1000, PAGE_READWRITE, &old));
  EXPECT_EQ(old, DWORD{PAGE_READWRITE | PAGE_GUARD});  // was still armed
  VirtualFree(pages, 0, MEM_RELEASE);
}

TEST(TextOnWindows, IsReadInTheSystemsCodePage) {
  EXPECT_EQ(Widened("name", 4), std::pair(true, L"name"s));
  EXPECT_EQ(Widened("na\0me"s, 4), std::pair(true, L"na\0\0"s));
  EXPECT_EQ(Widened("name", 3), std::pair(false, L"\0\0\0"s));
  EXPECT_EQ(Widened("", 1), std::pair(true, L"\0"s));
  if (GetACP() == CP_UTF8) EXPECT_EQ(Widened("\xC3\xA4", 1), std::pair(true, L"\u00E4"s));
  if (GetACP() == CP_UTF8) EXPECT_EQ(Widened("a\xC3", 2), std::pair(false, L"\0\0"s));
  if (GetACP() == 1252) EXPECT_EQ(Widened("\xE4\x80", 2), std::pair(true, L"\u00E4\u20AC"s));
}

}  // namespace
