#include <windows.h>

#include <cstdio>
#include <string_view>

#include "base/faults.h"
#include "base/replacement.h"

namespace qv {

struct Replacement::Names {
  wchar_t target[1024];
  wchar_t part[1024];
};

namespace {

bool Refused() {
  if (!file_faults.Strikes()) return false;
  SetLastError(ERROR_IO_DEVICE);
  return true;
}

}  // namespace

Replacement::~Replacement() {
  static_cast<void>(file_.Close());
  if (names().part[0] != 0) DeleteFileW(names().part);
}

bool Replacement::Open(const QWChar* name) {
  static_assert(sizeof(Names) <= sizeof names_);
  constexpr int kTries = 100;
  const std::wstring_view whole(name);
  if (Refused() || whole.size() >= std::size(names().target) - 16) return false;
  whole.copy(names().target, whole.size());
  HANDLE handle = INVALID_HANDLE_VALUE;
  for (int i = 0; i < kTries && handle == INVALID_HANDLE_VALUE; ++i) {
    const auto number = static_cast<unsigned>(GetTickCount() * kTries + i);
    std::swprintf(names().part, std::size(names().part), L"%ls.%08x", names().target, number);
    handle =
        CreateFileW(names().part, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS) break;
  }
  file_.native_ = reinterpret_cast<intptr_t>(handle);
  if (!file_.IsOpen()) names().part[0] = 0;
  return file_.IsOpen();
}

bool Replacement::Commit() {
  if (Refused() || !FlushFileBuffers(reinterpret_cast<HANDLE>(file_.native_))) return false;
  if (!file_.Close() || Refused()) return false;
  // Keeps attributes and access control of the old file.
  if (!ReplaceFileW(names().target, names().part, nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)) {
    return false;
  }
  names().part[0] = 0;
  return true;
}

}  // namespace qv
