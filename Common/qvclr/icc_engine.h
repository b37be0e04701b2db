// Instances of the colour engine that are silent and take their memory from the tracked allocator, and owners for what
// the engine hands out.
#pragma once

#include <lcms2.h>

#include <memory>

namespace qv {

template <auto kFunction>
struct EngineDeleter {
  template <typename T>
  void operator()(T* object) const {
    static_cast<void>(kFunction(object));
  }
};
using EngineContext = std::unique_ptr<std::remove_pointer_t<cmsContext>, EngineDeleter<cmsDeleteContext>>;
using EngineProfile = std::unique_ptr<void, EngineDeleter<cmsCloseProfile>>;
using EnginePipeline = std::unique_ptr<cmsPipeline, EngineDeleter<cmsPipelineFree>>;

EngineContext MakeEngineContext();  // null without memory

}  // namespace qv
