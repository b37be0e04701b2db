#include "qvclr/icc_engine.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <cassert>
#include <cstring>

#include "base/memory.h"

namespace qv {

// Stands before every block that the engine holds.
struct alignas(std::max_align_t) Engine::Block {
  Block *next, *previous;
  size_t bytes;
};

void* Engine::AllocateFromReserve(size_t bytes) {
  constexpr size_t kAlignment = alignof(std::max_align_t);
  const size_t whole = (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (whole > sizeof reserve_ - reserve_used_) return nullptr;
  std::byte* block = reserve_ + reserve_used_;
  reserve_used_ += whole;
  return block;
}

void* Engine::Allocate(size_t bytes) {
  if (!opened_) return AllocateFromReserve(bytes);
  if (bytes > kLargestEngineBlock) throw Failure(kProfileOpen);
  auto* block = static_cast<Block*>(qv::Allocate(sizeof(Block) + bytes, 1));
  if (!block) throw Failure(kNoMemory);
  *block = {blocks_, nullptr, bytes};
  if (blocks_) blocks_->previous = block;
  blocks_ = block;
  return block + 1;
}

// What the engine calls.
struct Engine::Handlers {
  static void* Malloc(cmsContext context, cmsUInt32Number bytes) { return Of(context).Allocate(bytes); }

  static void Free(cmsContext context, void* memory) {
    Engine& engine = Of(context);
    auto* bytes = static_cast<std::byte*>(memory);
    if (!memory || (bytes >= engine.reserve_ && bytes < std::end(engine.reserve_))) return;
    Block* block = static_cast<Block*>(memory) - 1;
    (block->previous ? block->previous->next : engine.blocks_) = block->next;
    if (block->next) block->next->previous = block->previous;
    Release(block);
  }

  static void* Realloc(cmsContext context, void* memory, cmsUInt32Number bytes) {
    void* grown = Malloc(context, bytes);
    if (memory) std::memcpy(grown, memory, std::min<size_t>((static_cast<Block*>(memory) - 1)->bytes, bytes));
    Free(context, memory);
    return grown;
  }

  // Profiles are opened, read and closed by the one thread that makes a transform, which needs no locks.
  static void* CreateMutex(cmsContext context) { return context; }
  static void DestroyMutex(cmsContext /*context*/, void* /*mutex*/) {}
  static cmsBool LockMutex(cmsContext /*context*/, void* /*mutex*/) { return TRUE; }
  static void UnlockMutex(cmsContext /*context*/, void* /*mutex*/) {}
};

Engine* Engine::Open() {
  auto engine = New<Engine>();
  if (!engine) return nullptr;
  cmsPluginMutex mutexes{{cmsPluginMagicNumber, kVersionOfPlugins, cmsPluginMutexSig, nullptr},
                         Handlers::CreateMutex,
                         Handlers::DestroyMutex,
                         Handlers::LockMutex,
                         Handlers::UnlockMutex};
  cmsPluginMemHandler memory{};
  memory.base = {cmsPluginMagicNumber, kVersionOfPlugins, cmsPluginMemHandlerSig, &mutexes.base};
  memory.MallocPtr = Handlers::Malloc;
  memory.FreePtr = Handlers::Free;
  memory.ReallocPtr = Handlers::Realloc;
  engine->context_ = cmsCreateContext(&memory, engine.get());
  if (!engine->context_) return nullptr;
  cmsSetLogErrorHandlerTHR(engine->context_, [](cmsContext, cmsUInt32Number, const char*) {});
  assert(engine->reserve_used_ <= sizeof reserve_ / 2);
  engine->opened_ = true;
  return engine.release();
}

void Engine::Close(Engine* engine) {
  if (!engine) return;
  cmsDeleteContext(engine->context_);
  while (Block* block = engine->blocks_) {
    engine->blocks_ = block->next;
    Release(block);
  }
  Release(engine);
}

}  // namespace qv
