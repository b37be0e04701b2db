#include <dlfcn.h>

#include "support/load_module.h"

namespace qv_test {

void* LoadModule(const char* path) { return dlopen(path, RTLD_NOW); }
void UnloadModule(void* module) { dlclose(module); }
void* SystemModule() { return dlopen("libm.so.6", RTLD_NOW); }

}  // namespace qv_test
