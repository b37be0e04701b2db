// Byte vectors in double precision, for formulas whose every operation counts: in the order of the pixel function, no
// multiplication and addition in one.

#if defined(QV_DOUBLES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_DOUBLES_INL_H
#undef QV_DOUBLES_INL_H
#else
#define QV_DOUBLES_INL_H
#endif

#include "qvclr/kernels/words-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS

using FewI32 = hn::Rebind<int32_t, F64>;  // as many as doubles
using FewInts = hn::Vec<FewI32>;

HWY_INLINE DoubleVector SetDouble(double value) { return hn::Set(F64(), value); }
HWY_INLINE DoubleVector DoubleOf(FewInts ints) { return hn::PromoteTo(F64(), ints); }
HWY_INLINE FewInts WholeOf(DoubleVector values) { return hn::DemoteTo(FewI32(), values); }  // toward zero

// function(ints of each vector...) of one half of the integers, then of the other.
template <typename Function, typename... Vectors>
HWY_INLINE IntVector InHalves(Function&& function, const Vectors&... ints) {
  const FewInts lower = function(hn::LowerHalf(FewI32(), ints)...), upper = function(hn::UpperHalf(FewI32(), ints)...);
  return hn::Combine(I32(), upper, lower);
}

#endif  // QV_HAS_VECTORS

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
