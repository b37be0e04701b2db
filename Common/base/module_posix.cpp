#include "base/module.h"

#include <dlfcn.h>

#include <cstring>

// The table that the build makes from the resource script: {type, number, bytes, size}, ended by a null type. A library
// of resources exports a table of its own under the same name.
struct QvResource {
  const char* type;
  uint64_t number;
  const uint8_t* bytes;
  uint64_t size;
};
extern "C" __attribute__((visibility("hidden"))) const QvResource Qv_resources[];

namespace qv {
namespace {

// The numbers of the other system, so that callers see the same.
constexpr auto kNoResources = static_cast<Status>(1812);
constexpr auto kNoSuchType = static_cast<Status>(1813);
constexpr auto kNoSuchNumber = static_cast<Status>(1814);

bool IsThisLibrary(void* module) {
  if (module == OwnModule()) return true;
  Dl_info info;
  if (!module || dladdr(&Qv_resources, &info) == 0) return false;
  void* own = dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
  if (!own) return false;
  dlclose(own);
  return own == module;
}

}  // namespace

void* OwnModule() { return const_cast<QvResource*>(Qv_resources); }

Status FindModuleResource(void* module, const char* type, uint32_t number, std::span<const uint8_t>* bytes) {
  const auto* resource =
      IsThisLibrary(module) ? Qv_resources : static_cast<const QvResource*>(dlsym(module, "Qv_resources"));
  if (!resource) return kNoResources;
  Status missing = kNoSuchType;
  for (; resource->type; ++resource) {
    if (std::strcmp(resource->type, type) != 0) continue;
    if (resource->number == number) {
      *bytes = {resource->bytes, resource->size};
      return kSuccess;
    }
    missing = kNoSuchNumber;
  }
  return missing;
}

}  // namespace qv
