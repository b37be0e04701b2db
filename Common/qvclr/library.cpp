#include "qvclr/library.h"

#include <cstring>

#include "base/module.h"

namespace qv {
namespace {

constinit Library library;

void ReleaseAll(ConverterList& list) {
  while (ConverterList::Node* node = list.First()) {
    list.Unlink(node);
    ConverterReleaser()(node->converter);
    Release(node);
  }
}

}  // namespace

Library& TheLibrary() { return library; }

void AttachLibrary() {
  if (library.attachments.load() == 0) library.section.Open();
  const SectionGuard guard(library.section);
  library.resource_module.store(OwnModule());
  library.attachments.fetch_add(1);
}

void DetachLibrary() {
  {
    const SectionGuard guard(library.section);
    if (library.attachments.fetch_sub(1) > 1) return;
    ReleaseAll(library.live);
    ReleaseAll(library.leftovers);
    library.shared_transforms.Forget();
  }
  library.section.Close();
}

void UseResourcesOf(void* module) {
  const SectionGuard guard(library.section);
  library.resource_module.store(module);
  library.shared_transforms.Forget();
}

NamedSpaces::NamedSpaces(const ColorConverter* record) {
  uint32_t head[3];  // marker, source, destination
  std::memcpy(head, record, sizeof head);
  source = FindSpace(head[1]);
  target = FindSpace(head[2]);
}

void AddConverter(ConverterOwner converter, Owned<ConverterList::Node> node) {
  const SectionGuard guard(library.section);
  node->converter = converter.release();
  library.live.Append(node.release());
}

Status CheckLive(const ColorConverter* converter) {
  const SectionGuard guard(library.section);
  // An address on the list is readable: it is the library's own.
  const bool live = library.live.Find(converter) && converter->marker == kConverterMarker;
  return live ? kSuccess : kInvalidConverter;
}

void DiscardConverter(ColorConverter* live) {
  const SectionGuard guard(library.section);
  ConverterList::Node* node = library.live.Find(live);
  library.live.Unlink(node);
  ConverterReleaser()(live);
  Release(node);
}

Status FreeConverter(ColorConverter* converter) {
  const SectionGuard guard(library.section);
  if (const Status status = CheckLive(converter); !Ok(status)) return status;
  ConverterList::Node* node = library.live.Find(converter);
  library.live.Unlink(node);
  if (!ReleaseByMask(converter)) {
    converter->marker = 0;
    library.leftovers.Append(node);
    return kSuccess;
  }
  Release(converter);
  Release(node);
  return kSuccess;
}

}  // namespace qv
