#include "qvclr/icc_shared.h"

#include "base/memory.h"
#include "qvclr/library.h"

namespace qv {
namespace {

// Profiles are told by where they lie.
struct Key {
  const Space *in, *out;
  const uint8_t *in_profile, *out_profile;
  bool has_white;
  double white_x, white_z;
  bool operator==(const Key&) const = default;
};

Key KeyOf(const IccSide& in, const IccSide& out, const WhitePoint& white) {
  const double x = white ? white->X : 0, z = white ? white->Z : 0;
  return {in.space, out.space, in.profile.data(), out.profile.data(), white.has_value(), x, z};
}

}  // namespace

struct SharedTransforms::Entry {
  Entry* next;
  Key key;
  IccTransform* transform;

  // The link to the entry with the key, or the one that ends the list.
  static Entry** Find(Entry** link, const Key& key) {
    while (*link && !((*link)->key == key)) link = &(*link)->next;
    return link;
  }
};

void SharedTransforms::Trim(size_t kept) {
  for (Entry** link = &newest_; *link;) {
    Entry* entry = *link;
    const bool held = entry->transform->Holders() > 1;
    if (held || kept > 0) {
      if (!held) --kept;
      link = &entry->next;
      continue;
    }
    *link = entry->next;
    IccTransform::Delete(entry->transform);
    Release(entry);
  }
}

void SharedTransforms::Forget() {
  ++generation_;
  while (Entry* entry = newest_) {
    newest_ = entry->next;
    IccTransform::Delete(entry->transform);
    Release(entry);
  }
}

Status ShareTransform(const IccSide& in, const IccSide& out, const WhitePoint& white, IccTransform** shared) {
  using Entry = SharedTransforms::Entry;
  SharedTransforms& transforms = TheLibrary().shared_transforms;
  const Key key = KeyOf(in, out, white);
  const auto find = [&] {  // also makes it the newest
    Entry** link = Entry::Find(&transforms.newest_, key);
    Entry* entry = *link;
    if (!entry) return false;
    *link = entry->next;
    entry->next = transforms.newest_;
    transforms.newest_ = entry;
    *shared = entry->transform->Hold();
    return true;
  };
  size_t generation;
  {
    const SectionGuard guard(TheLibrary().section);
    if (find()) return kSuccess;
    generation = transforms.generation_;
  }
  auto entry = New<Entry>();
  if (!entry) return kNoMemory;
  IccTransform* made;
  if (const Status status = IccTransform::Make(in, out, white, &made); !Ok(status)) return status;

  const SectionGuard guard(TheLibrary().section);
  if (generation != transforms.generation_) {
    *shared = made;
    return kSuccess;
  }
  if (find()) {  // another thread was faster
    IccTransform::Delete(made);
    return kSuccess;
  }
  entry->key = key;
  entry->transform = made;
  entry->next = transforms.newest_;
  transforms.newest_ = entry.release();
  *shared = made->Hold();
  return kSuccess;
}

}  // namespace qv
