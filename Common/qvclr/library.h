// The state of the module: what its resources are read from, its critical section, the converters, and transforms that
// stay ready for them.
#pragma once

#include <atomic>

#include "base/section.h"
#include "qvclr/converter.h"
#include "qvclr/icc_shared.h"
#include "qvclr/spaces.h"

namespace qv {

struct Library {
  std::atomic<void*> resource_module{nullptr};
  Section section;
  std::atomic<int32_t> attachments{0};  // changed under the section, but for the first
  ConverterList live;
  // Released converters that still hold what their method mask did not cover; they go at detach.
  ConverterList leftovers;
  SharedTransforms shared_transforms;
};
Library& TheLibrary();

// Called when a process loads and unloads the library.
void AttachLibrary();
void DetachLibrary();

void UseResourcesOf(void* module);

// The spaces that a readable record names, null for unknown ones. It need not be a converter, nor aligned as one.
struct NamedSpaces {
  const Space *source, *target;
  explicit NamedSpaces(const ColorConverter* record);
};

// Each takes the section. `Add` takes both over.
void AddConverter(ConverterOwner converter, Owned<ConverterList::Node> node);
Status CheckLive(const ColorConverter* converter);
Status FreeConverter(ColorConverter* converter);
// As if it had never been made, whatever its method mask.
void DiscardConverter(ColorConverter* live);

}  // namespace qv
