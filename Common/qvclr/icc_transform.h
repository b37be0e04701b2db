// A transform of the colour engine between two profiles, with the white point in between.
#pragma once

#include <cstddef>
#include <span>

#include "base/status.h"

namespace qv {

class Engine;
struct Space;

// One side of a transform: a pixel format of the engine and the bytes of a profile of its colour space.
struct IccSide {
  const Space* space;
  std::span<const uint8_t> profile;
};

class IccTransform {
 public:
  // Perceptual intent. The white point is that of the side that is not RGB; between two RGB sides there is none, and
  // between two others it would come and go.
  // kProfileOpen: a profile that cannot be opened or whose colour space is not its side's; kInvalidParameter: a custom
  // white point that is no chromaticity; kNoMemory.
  static Status Make(const IccSide& in, const IccSide& out, const WhitePointParams& white, IccTransform** made);
  static void Delete(IccTransform* transform);  // null is allowed

  // `src` may be `dst` when the pixels have equal sizes.
  void Run(const uint8_t* src, uint8_t* dst, size_t pixels) const;

 private:
  Engine* engine_;  // an instance of its own, with which the transform goes
  void* transform_;
};

// The built-in profile of a space that ICC serves, from the resource module.
Status FindBuiltInProfile(const Space& space, std::span<const uint8_t>* profile);

}  // namespace qv
