#include <windows.h>
// shellapi.h needs windows.h before it.
#include <shellapi.h>

#include <filesystem>
#include <memory>
#include <new>

#include "arguments.h"

namespace client {

// main() gets them in the system's code page, which does not have every character.
std::vector<std::string> ArgumentsInUtf8(int /*argc*/, char** /*argv*/) {
  int count = 0;
  const std::unique_ptr<LPWSTR[], decltype(&LocalFree)> words(CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
  if (!words) throw std::bad_alloc();
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    const std::u8string word = std::filesystem::path(words[static_cast<size_t>(i)]).u8string();
    arguments.emplace_back(word.begin(), word.end());
  }
  return arguments;
}

}  // namespace client
