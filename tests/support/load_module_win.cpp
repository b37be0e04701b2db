#include <windows.h>

#include "support/load_module.h"

namespace qv_test {

void* LoadModule(const char* path) { return LoadLibraryA(path); }
void UnloadModule(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }
void* SystemModule() { return LoadLibraryA("kernel32.dll"); }

}  // namespace qv_test
