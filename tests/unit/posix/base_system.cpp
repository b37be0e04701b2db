// Names and texts where the narrow encoding is UTF-8.
#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "base/files.h"
#include "base/last_error.h"
#include "base/text.h"
#include "base/utf8_posix.h"
#include "unit/base_system.h"

// For sizes beyond theirs the sanitizers' allocators end the program, unless they are told to give null as the system
// does.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

size_t qv_test::OpenHandles() {
  return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

namespace {
using namespace qv;
using namespace std::string_literals;

// The text without a terminator, up to a guard page, into exactly `units`.
std::pair<bool, std::u16string> Widened(std::string_view text, size_t units) {
  const qv_test::GuardedBuffer narrow({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  std::u16string wide(units, u'?');
  const bool fits = WideFromNarrow({reinterpret_cast<const char*>(narrow.data()), text.size()}, wide);
  return {fits, wide};
}

TEST(TextAsUtf8, IsWidenedWhenItFits) {
  const std::pair<std::string, std::u16string> kFacts[] = {
      {"", u""},
      {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80", u"\x7F\x80\u07FF\u0800"},
      {"\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\uD7FF\uE000\uFFFF"},
      {"a\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"a\U00010000\U0010FFFF"}};
  for (const auto& [narrow, wide] : kFacts) {
    EXPECT_EQ(Widened(narrow, wide.size()), std::pair(true, wide)) << narrow;
    EXPECT_EQ(Widened(narrow + '\0' + "\xFF", wide.size() + 2), std::pair(true, wide + u"\0\0"s)) << narrow;
    EXPECT_EQ(Widened(narrow + "b", wide.size()), std::pair(false, std::u16string(wide.size(), 0))) << narrow;
    std::vector<char> back(narrow.size() + 1, '?');
    EXPECT_TRUE(Utf8FromWide(wide.c_str(), back));
    EXPECT_STREQ(back.data(), narrow.c_str());
    EXPECT_FALSE(Utf8FromWide(wide.c_str(), std::span(back).first(narrow.size()))) << narrow;
  }
  EXPECT_FALSE(Widened("\xF0\x90\x80\x80", 1).first);  // half a pair does not count
}

TEST(TextAsUtf8, IsRefusedWhenMalformed) {
  for (const char* text : {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80",
                           "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3", "\xE2\x82",
                           "\xF0\x9F\x98", "\xC3(", "\xE2(\xA1", "\xE2\x82(", "\xF0\x9F\x98(", "\xC3\xC3\xA4"}) {
    EXPECT_EQ(Widened(std::string("ok") + text, 8), std::pair(false, std::u16string(8, 0))) << text;
  }
}

TEST(FilesOnLinux, RefuseNamesThatAreNoText) {
  const std::u16string folder = std::filesystem::temp_directory_path().u16string();
  for (const char16_t* name : {u"/qv \xD800", u"/qv \xDC00 qv", u"/qv \xD800\xD800\xDC00", u"/\xDC00\xDC00"}) {
    File file;
    EXPECT_FALSE(file.Open((folder + name).c_str(), Disposition::kCreateAlways));
    EXPECT_GT(static_cast<int>(LastErrorStatus()), 1);
    EXPECT_FALSE(File::Exists((folder + name).c_str()));
  }
  errno = EPERM;  // 1 would read as success
  EXPECT_EQ(static_cast<int>(LastErrorStatus()), EACCES);
}

}  // namespace
