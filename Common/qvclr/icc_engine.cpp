#include "qvclr/icc_engine.h"

#include <lcms2_plugin.h>

#include "base/memory.h"

namespace qv {
namespace {

// A damaged profile may ask for anything; the engine's own memory handler stops at the same size.
constexpr cmsUInt32Number kLargestBlock = 512u << 20;

void* EngineMalloc(cmsContext /*context*/, cmsUInt32Number size) {
  return size <= kLargestBlock ? AllocateForEngine(size) : nullptr;
}
void* EngineRealloc(cmsContext /*context*/, void* block, cmsUInt32Number size) {
  return size <= kLargestBlock ? ResizeForEngine(block, size) : nullptr;
}
void EngineFree(cmsContext /*context*/, void* block) { ReleaseForEngine(block); }

}  // namespace

EngineContext MakeEngineContext() {
  cmsPluginMemHandler memory{};
  memory.base = {cmsPluginMagicNumber, 2000, cmsPluginMemHandlerSig, nullptr};
  memory.MallocPtr = EngineMalloc;
  memory.FreePtr = EngineFree;
  memory.ReallocPtr = EngineRealloc;
  EngineContext context(cmsCreateContext(&memory, nullptr));
  if (context) cmsSetLogErrorHandlerTHR(context.get(), [](cmsContext, cmsUInt32Number, const char*) {});
  return context;
}

}  // namespace qv
