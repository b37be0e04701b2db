// The loader's hooks.
#include "base/readable_posix.h"
#include "qvclr/library.h"

namespace {

[[gnu::constructor]] void OnLoad() { qv::AttachLibrary(); }

[[gnu::destructor]] void OnUnload() {
  qv::DetachLibrary();
  qv::CloseKernelMap();
}

}  // namespace
