// Instances of the colour engine: silent, fed by the tracked allocator, and released whole.
//
// The engine does not survive every allocation that fails inside it. So none is ever seen to fail there: the failure
// leaves the engine at once, and what the engine holds by then goes with the instance, never piece by piece.
#pragma once

#include <lcms2.h>

#include <cstddef>
#include <memory>
#include <new>

#include "base/status.h"

namespace qv {

struct IccShaper;

// Of the engine's plug-in interface: what every plug-in names.
inline constexpr cmsUInt32Number kVersionOfPlugins = 2000;

// A damaged profile may ask for anything; the engine's own memory handler stops at the same size.
inline constexpr size_t kLargestEngineBlock = size_t{512} << 20;

class Engine {
 public:
  static Engine* Open();              // null without memory
  static void Close(Engine* engine);  // with everything that it handed out; null is allowed

  cmsContext context() const { return context_; }
  static Engine& Of(cmsContext context) { return *static_cast<Engine*>(cmsGetContextUserData(context)); }

  IccShaper* shaper;  // filled with what a transform being made evaluates; null if nobody asks

  // Runs `work`, which returns a status and owns nothing, inside the engine. kNoMemory when an allocation fails in
  // there, kProfileOpen for one that is too large; the engine is then fit for nothing but Close.
  template <typename Work>
  static Status Enter(Work&& work) {
    try {
      return work();
    } catch (const Failure& failure) {
      return failure.status;
    }
  }

 private:
  struct Failure : std::bad_alloc {
    Status status;
    explicit Failure(Status s) : status(s) {}
  };
  struct Block;
  struct Handlers;

  void* Allocate(size_t bytes);
  void* AllocateFromReserve(size_t bytes);

  cmsContext context_;
  bool opened_;
  Block* blocks_;
  // An instance that fails while it is opened would stay in the engine's list of instances: that part is fed from here.
  size_t reserve_used_;
  alignas(std::max_align_t) std::byte reserve_[size_t{16} << 10];
};

struct EngineCloser {
  void operator()(Engine* engine) const { Engine::Close(engine); }
};
using EngineOwner = std::unique_ptr<Engine, EngineCloser>;

}  // namespace qv
