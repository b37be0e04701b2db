// A transform of the colour engine between two profiles, with the white point in between.
#pragma once

#include <cstddef>
#include <span>

#include "base/status.h"
#include "qvclr/icc_grid.h"
#include "qvclr/icc_shaper.h"
#include "qvclr/white_point.h"

namespace qv {

class Engine;
struct Space;

// One side of a transform: a pixel format of the engine and the bytes of a profile of its colour space.
struct IccSide {
  const Space* space;
  std::span<const uint8_t> profile;
};

// Runs in several threads at once.
class IccTransform {
 public:
  // Perceptual intent. kProfileOpen: a profile that cannot be opened or whose colour space is not its side's;
  // kNoMemory.
  static Status Make(const IccSide& in, const IccSide& out, const WhitePoint& white, IccTransform** made);

  // Whoever makes a transform holds it. These take the library's section.
  IccTransform* Hold();
  static void Delete(IccTransform* transform);  // for one holder; null is allowed
  size_t Holders() const { return holders_; }   // within the section

  bool RunsInEngine() const { return engine_ != nullptr; }

  // `src` may be `dst` when the pixels have equal sizes.
  void Run(const uint8_t* src, uint8_t* dst, size_t pixels) const;

 private:
  size_t holders_;
  IccGrid grid_;       // where it has quads, all that the transform needs
  IccShaper* shaper_;  // else, unless null, all that it needs
  Engine* engine_;     // else the instance that the engine's transform belongs to
  void* transform_;
};

// The built-in profile of a space that ICC serves, from the resource module.
Status FindBuiltInProfile(const Space& space, std::span<const uint8_t>* profile);

}  // namespace qv
