// The loader's hook.
#include <windows.h>

#include "qvclr/library.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) qv::AttachLibrary();
  // When the process ends its other threads are gone, perhaps with the section held: the system takes the memory back.
  if (reason == DLL_PROCESS_DETACH && !process_ends) qv::DetachLibrary();
  return TRUE;
}
