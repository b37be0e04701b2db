#include "base/module.h"

#include <windows.h>

#include "base/last_error.h"

namespace qv {

void* OwnModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&OwnModule), &module);
  return module;
}

Status FindModuleResource(void* module, const char* type, uint32_t number, std::span<const uint8_t>* bytes) {
  const auto handle = static_cast<HMODULE>(module);
  const HRSRC found = FindResourceA(handle, MAKEINTRESOURCEA(number), type);
  if (!found) return LastErrorStatus();
  const HGLOBAL loaded = LoadResource(handle, found);
  const DWORD size = SizeofResource(handle, found);
  const void* locked = loaded ? LockResource(loaded) : nullptr;
  if (!locked || size == 0) return LastErrorStatus();
  *bytes = {static_cast<const uint8_t*>(locked), size};
  return kSuccess;
}

}  // namespace qv
