#include "qvclr/icc_engine.h"

#include <lcms2_plugin.h>

#include "base/memory.h"

namespace qv {
namespace {

void* EngineMalloc(cmsContext /*context*/, cmsUInt32Number size) { return AllocateForEngine(size); }
void* EngineRealloc(cmsContext /*context*/, void* block, cmsUInt32Number size) { return ResizeForEngine(block, size); }
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
