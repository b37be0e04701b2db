#include <windows.h>

#include <algorithm>
#include <string_view>

#include "base/faults.h"
#include "base/files.h"

namespace qv {
namespace {

bool Refused() {
  if (!file_faults.Strikes()) return false;
  SetLastError(ERROR_IO_DEVICE);
  return true;
}

HANDLE Native(intptr_t native) { return reinterpret_cast<HANDLE>(native); }

constexpr size_t kLargestStep = size_t{1} << 30;  // one call counts in 32 bits

}  // namespace

bool File::Open(const QWChar* name, Disposition disposition) {
  Close();
  if (Refused()) return false;
  struct Mode {
    DWORD access, share, creation;
  };
  constexpr Mode kModes[] = {{GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING},  // by disposition
                             {GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING},
                             {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS}};
  const Mode& mode = kModes[static_cast<size_t>(disposition)];
  native_ = reinterpret_cast<intptr_t>(
      CreateFileW(name, mode.access, mode.share, nullptr, mode.creation, FILE_ATTRIBUTE_NORMAL, nullptr));
  return IsOpen();
}

bool File::Close() {
  if (!IsOpen()) return true;
  const HANDLE handle = Native(native_);
  native_ = kClosed;
  return CloseHandle(handle) && !Refused();
}

bool File::Read(void* bytes, size_t count, size_t* taken) {
  *taken = 0;
  while (*taken < count) {
    DWORD step = 0;
    if (Refused() || !ReadFile(Native(native_), static_cast<char*>(bytes) + *taken,
                               static_cast<DWORD>(std::min(count - *taken, kLargestStep)), &step, nullptr)) {
      return false;
    }
    if (step == 0) break;
    *taken += step;
  }
  return true;
}

bool File::Write(const void* bytes, size_t count) {
  for (size_t done = 0; done < count;) {
    DWORD step = 0;
    if (Refused() || !WriteFile(Native(native_), static_cast<const char*>(bytes) + done,
                                static_cast<DWORD>(std::min(count - done, kLargestStep)), &step, nullptr)) {
      return false;
    }
    done += step;
  }
  return true;
}

bool File::Seek(int64_t offset, Origin origin, int64_t* position) {
  constexpr DWORD kMethod[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
  LARGE_INTEGER distance, reached;
  distance.QuadPart = offset;
  if (Refused() || !SetFilePointerEx(Native(native_), distance, &reached, kMethod[static_cast<size_t>(origin)])) {
    return false;
  }
  if (position) *position = reached.QuadPart;
  return true;
}

bool File::Exists(const QWChar* name) {
  if (Refused()) return false;
  constexpr std::wstring_view kVerbatim = L"\\\\?\\";
  const std::wstring_view whole(name);
  const std::wstring_view searched = whole.starts_with(kVerbatim) ? whole.substr(kVerbatim.size()) : whole;
  if (searched.find_first_of(L"*?<>\"") != searched.npos) {  // a search would take these for patterns
    SetLastError(ERROR_INVALID_NAME);
    return false;
  }
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(name, &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return true;
}

}  // namespace qv
