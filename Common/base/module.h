// Resources of a module, told by a type name and a number.
#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"

namespace qv {

void* OwnModule();

// The bytes stay where the module has them. A failure is the system's error number (positive): 1812 a module without
// resources, 1813 one without this type, 1814 one without this number, on every system.
Status FindModuleResource(void* module, const char* type, uint32_t number, std::span<const uint8_t>* bytes);

}  // namespace qv
