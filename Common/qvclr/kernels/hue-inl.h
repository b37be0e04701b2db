// What the spaces with a hue of six sextants share: the sides of the hexagon that the colours lie on.

#if defined(QV_HUE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_HUE_INL_H
#undef QV_HUE_INL_H
#else
#define QV_HUE_INL_H
#endif

#include "qvclr/kernels/words-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS

// Around its strongest channel the hue grows with `next` and falls with `previous`; a turn has 255 units.
struct Strongest {
  explicit HWY_INLINE Strongest(const RgbPlanes& rgb)
      : most(hn::Max(rgb.r, hn::Max(rgb.g, rgb.b))),
        least(hn::Min(rgb.r, hn::Min(rgb.g, rgb.b))),
        delta(hn::Sub(most, least)),
        is_red(hn::Eq(rgb.r, most)) {
    const ByteMask is_green = hn::Eq(rgb.g, most);
    next = hn::IfThenElse(is_red, rgb.g, hn::IfThenElse(is_green, rgb.b, rgb.r));
    previous = hn::IfThenElse(is_red, rgb.b, hn::IfThenElse(is_green, rgb.r, rgb.g));
    hue = hn::IfThenZeroElse(is_red, hn::IfThenElse(is_green, hn::Set(U8(), uint8_t{85}), hn::Set(U8(), uint8_t{170})));
  }
  ByteVector most, least, delta;
  ByteMask is_red;
  ByteVector next, previous, hue;
};

// How far two hues lie apart, in bytes that wrap; at most 127.
HWY_INLINE ByteVector Apart(ByteVector a, ByteVector b) { return hn::Min(hn::Sub(a, b), hn::Sub(b, a)); }

// Where a hue lies, told by the first hues of the second to the sixth sextant.
template <uint8_t kSecond, uint8_t kThird, uint8_t kFourth, uint8_t kFifth, uint8_t kSixth>
struct Sextants {
  explicit HWY_INLINE Sextants(ByteVector hue)
      : from_second(AtLeast(hue, kSecond)),
        from_third(AtLeast(hue, kThird)),
        from_fourth(AtLeast(hue, kFourth)),
        from_fifth(AtLeast(hue, kFifth)),
        from_sixth(AtLeast(hue, kSixth)) {}

  // Of every pixel one channel is the most, one the least, and one between.
  HWY_INLINE RgbPlanes Colours(ByteVector most, ByteVector between, ByteVector least) const {
    const auto either = [](ByteMask mask, ByteVector yes, ByteVector no)
                            HWY_ATTR { return hn::IfThenElse(mask, yes, no); };
    return {either(from_sixth, most,
                   either(from_fifth, between, either(from_third, least, either(from_second, between, most)))),
            either(from_fifth, least, either(from_fourth, between, either(from_second, most, between))),
            either(from_sixth, between, either(from_fourth, most, either(from_third, between, least)))};
  }

  ByteMask from_second, from_third, from_fourth, from_fifth, from_sixth;
};

#endif  // QV_HAS_VECTORS

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
