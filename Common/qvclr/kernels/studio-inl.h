// Studio-range YUV in the vector rows, compiled once per instruction set: what the video layouts share. A kernel file
// includes this after <hwy/foreach_target.h>.
#include "qvclr/kernels/matrix-inl.h"
#include "qvclr/kernels/studio.h"

#if defined(QV_STUDIO_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_STUDIO_INL_H
#undef QV_STUDIO_INL_H
#else
#define QV_STUDIO_INL_H
#endif

#if QV_HAS_VECTORS
HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

using StudioFromRgbVectors = MatrixVectors<StudioOfRgb>;
using RgbFromStudioVectors = MatrixVectors<RgbOfStudio>;  // of the pairs (Y, U) and (V, any)

// Sums over two pixels, times a factor.
template <int kFactor>
HWY_INLINE IntVector SumsOfTwo(I16Vector words) {
  const I32 d;
  return AddProducts(hn::Zero(d), words, hn::Set(d, forms::PairOfWeights(kFactor, kFactor)));
}

// Sums over four pixels: of U in the first one's pair, of V in the second's.
HWY_INLINE IntVector SumsOfFour(I16Vector u, I16Vector v) {
  const IntVector of_u = SumsOfTwo<1>(u), of_v = SumsOfTwo<1>(v);
  return hn::Add(hn::OddEven(of_v, of_u), hn::Shuffle2301(hn::OddEven(of_u, of_v)));
}

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // QV_HAS_VECTORS
#endif  // per target
