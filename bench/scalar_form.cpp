#include "scalar_form.h"

#include <cstring>

#include "qvclr/kernels/kernels.h"
#include "qvclr/spaces.h"

extern "C" const void* ScalarFormOf(const char* kernel) {
  for (const qv::Kernel* known : {&qv::EmuCMYKToRGB, &qv::EmuRGBToLab, &qv::EmuLabToRGB}) {
    if (std::strcmp(known->name, kernel) == 0) return known;
  }
  for (const qv::Space& space : qv::AllSpaces()) {
    for (const qv::Kernel* known : {space.to_rgb, space.from_rgb}) {
      if (std::strcmp(known->name, kernel) == 0) return known;
    }
  }
  return nullptr;
}
