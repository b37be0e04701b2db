#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "support/system.h"

namespace qv_test {

size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

uint8_t* MapPages(size_t pages) {
  void* mapped = mmap(nullptr, pages * PageSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) std::abort();
  return static_cast<uint8_t*>(mapped);
}

void UnmapPages(uint8_t* pages, size_t count) { munmap(pages, count * PageSize()); }

void Protect(uint8_t* pages, size_t count, Protection protection) {
  constexpr int kNative[] = {PROT_NONE, PROT_READ, PROT_READ | PROT_WRITE};
  if (mprotect(pages, count * PageSize(), kNative[static_cast<size_t>(protection)]) != 0) std::abort();
}

void* LoadModule(const char* path) { return dlopen(path, RTLD_NOW); }
void UnloadModule(void* module) { dlclose(module); }
void* SystemModule() { return dlopen("libm.so.6", RTLD_NOW); }

}  // namespace qv_test
