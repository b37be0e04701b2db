// The transforms between built-in profiles, each made once and shared by all converters that need it. Guarded by the
// library's section.
#pragma once

#include <atomic>
#include <cstddef>
#include <optional>

#include "qvclr/icc_transform.h"

namespace qv {

// So many transforms stay ready when no converter needs them any more, those used last; one takes up to 3 MB. Tests
// lower it.
inline constinit std::atomic<size_t> kept_transforms{8};

class SharedTransforms {
 public:
  struct Entry;

  // Drops those that no converter holds, but for the newest `kept`.
  void Trim(size_t kept);
  // Nothing made so far is shared any more; what converters hold lives on until they go.
  void Forget();

 private:
  friend Status ShareTransform(const IccSide& in, const IccSide& out, const WhitePoint& white, IccTransform** shared);
  Entry* newest_ = nullptr;
  size_t generation_ = 0;  // counts what was forgotten, also while a transform is being made
};

// As IccTransform::Make, of profiles that stay in place until the next Forget.
Status ShareTransform(const IccSide& in, const IccSide& out, const WhitePoint& white, IccTransform** shared);

}  // namespace qv
