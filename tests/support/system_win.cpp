#include <windows.h>

#include <cstdlib>

#include "support/system.h"

namespace qv_test {

size_t PageSize() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}

uint8_t* MapPages(size_t pages) {
  void* mapped = VirtualAlloc(nullptr, pages * PageSize(), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (!mapped) std::abort();
  return static_cast<uint8_t*>(mapped);
}

void UnmapPages(uint8_t* pages, size_t /*count*/) { VirtualFree(pages, 0, MEM_RELEASE); }

void Protect(uint8_t* pages, size_t count, Protection protection) {
  constexpr DWORD kNative[] = {PAGE_NOACCESS, PAGE_READONLY, PAGE_READWRITE};
  DWORD old = 0;
  if (!VirtualProtect(pages, count * PageSize(), kNative[static_cast<size_t>(protection)], &old)) std::abort();
}

void* LoadModule(const char* path) { return LoadLibraryA(path); }
void UnloadModule(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }
void* SystemModule() { return LoadLibraryA("kernel32.dll"); }

}  // namespace qv_test
