// CS_LAB by a converter's own settings, in double precision: the operations of the pixel functions.

#if defined(QV_LAB_RECORD_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_LAB_RECORD_INL_H
#undef QV_LAB_RECORD_INL_H
#else
#define QV_LAB_RECORD_INL_H
#endif

#include "qvclr/kernels/doubles-inl.h"
#include "qvclr/kernels/floats-inl.h"
#include "qvclr/kernels/lab_pixel.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {

#if QV_HAS_VECTORS

struct DoubleTriple {
  DoubleVector x, y, z;
};
struct IntTriple {
  FewInts x, y, z;
};

// Three planes of bytes made of three, by a function of IntTriple to IntTriple.
template <typename Function>
HWY_INLINE Planes ByTriples(const Planes& planes, Function&& function) {
  const Ints first = IntsOf(WordsOf(planes.first)), middle = IntsOf(WordsOf(planes.middle)),
             last = IntsOf(WordsOf(planes.last));
  Ints x, y, z;
  for (size_t i = 0; i < 4; ++i) {
    const auto lower = [](IntVector ints) HWY_ATTR { return hn::LowerHalf(FewI32(), ints); };
    const auto upper = [](IntVector ints) HWY_ATTR { return hn::UpperHalf(FewI32(), ints); };
    const IntTriple low = function(IntTriple{lower(first.at[i]), lower(middle.at[i]), lower(last.at[i])}),
                    high = function(IntTriple{upper(first.at[i]), upper(middle.at[i]), upper(last.at[i])});
    x.at[i] = hn::Combine(I32(), high.x, low.x);
    y.at[i] = hn::Combine(I32(), high.y, low.y);
    z.at[i] = hn::Combine(I32(), high.z, low.z);
  }
  return {BytesOf(WordsOf(x)), BytesOf(WordsOf(y)), BytesOf(WordsOf(z))};
}

HWY_INLINE DoubleVector RowTimes(const double* row, const DoubleTriple& v) {
  return hn::Add(hn::Add(hn::Mul(SetDouble(row[0]), v.x), hn::Mul(SetDouble(row[1]), v.y)),
                 hn::Mul(SetDouble(row[2]), v.z));
}
HWY_INLINE DoubleVector LookUp(const double* table, FewInts indices) {
  return hn::GatherIndex(F64(), table, hn::PromoteTo(hn::Repartition<int64_t, F64>(), indices));
}

HWY_INLINE DoubleVector TabledCurve(DoubleVector t, const RgbToLabRecord& record) {
  const DoubleVector at = hn::Mul(t, SetDouble(kLabCurveSteps));
  const FewInts below = hn::Min(WholeOf(at), hn::Set(FewI32(), static_cast<int32_t>(record.lab_curve.size() - 2)));
  const DoubleVector first = LookUp(record.lab_curve.data(), below),
                     second = LookUp(record.lab_curve.data() + 1, below);
  return hn::Add(first, hn::Mul(hn::Sub(second, first), hn::Sub(at, DoubleOf(below))));
}

HWY_INLINE FewInts CodedBytes(DoubleVector value, int32_t offset, int32_t range) {
  const DoubleVector share = hn::Div(hn::Mul(value, SetDouble(255)), SetDouble(range));
  const DoubleVector coded = hn::Add(hn::Add(share, SetDouble(offset)), SetDouble(0.5));
  return WholeOf(hn::Min(hn::Max(coded, SetDouble(0)), SetDouble(255)));
}

HWY_INLINE IntTriple LabOfRgb(const IntTriple& rgb, const RgbToLabRecord& record) {
  const LabConstants& constants = record.constants;
  const double* table = record.linear.data();
  const DoubleTriple linear = {LookUp(table, rgb.x), LookUp(table, rgb.y), LookUp(table, rgb.z)};
  const auto curve = [&](size_t row) HWY_ATTR {
    const DoubleVector hundredfold = hn::Mul(RowTimes(&constants.matrix[3 * row], linear), SetDouble(100));
    return TabledCurve(hn::Div(hundredfold, SetDouble(constants.white[row])), record);
  };
  const DoubleVector fx = curve(0), fy = curve(1), fz = curve(2);
  return {CodedBytes(hn::Sub(hn::Mul(SetDouble(116), fy), SetDouble(16)), constants.l_offset, constants.l_range),
          CodedBytes(hn::Mul(SetDouble(500), hn::Sub(fx, fy)), constants.a_offset, constants.a_range),
          CodedBytes(hn::Mul(SetDouble(200), hn::Sub(fy, fz)), constants.b_offset, constants.b_range)};
}

HWY_INLINE DoubleVector InverseCurve(DoubleVector f) {
  const DoubleVector cube = hn::Mul(hn::Mul(f, f), f);
  const DoubleVector line = hn::Div(hn::Sub(f, SetDouble(kIntercept)), SetDouble(kSlope));
  return hn::IfThenElse(hn::Gt(cube, SetDouble(kLinearBelow)), cube, line);
}

HWY_INLINE FewInts BytesOfLinear(DoubleVector values, const std::array<float, 255>& begins) {
  HWY_ALIGN double linear[hn::MaxLanes(F64())];
  HWY_ALIGN int32_t bytes[hn::MaxLanes(F64())];
  hn::Store(values, F64(), linear);
  for (size_t i = 0; i < hn::MaxLanes(F64()); ++i) bytes[i] = lab::CountUpTo(linear[i], std::span(begins));
  return hn::Load(FewI32(), bytes);
}

HWY_INLINE IntTriple RgbOfLab(const IntTriple& lab, const LabToRgbRecord& record) {
  const LabConstants& constants = record.constants;
  const auto decoded = [](FewInts bytes, int32_t offset, int32_t range) HWY_ATTR {
    return hn::Div(hn::Mul(hn::Sub(DoubleOf(bytes), SetDouble(offset)), SetDouble(range)), SetDouble(255));
  };
  const DoubleVector l = decoded(lab.x, constants.l_offset, constants.l_range),
                     a = decoded(lab.y, constants.a_offset, constants.a_range),
                     b = decoded(lab.z, constants.b_offset, constants.b_range);
  const DoubleVector fy = hn::Div(hn::Add(l, SetDouble(16)), SetDouble(116));
  const auto scaled = [&](DoubleVector f, size_t i) HWY_ATTR {
    return hn::Div(hn::Mul(InverseCurve(f), SetDouble(constants.white[i])), SetDouble(100));
  };
  const DoubleTriple xyz = {scaled(hn::Add(fy, hn::Div(a, SetDouble(500))), 0), scaled(fy, 1),
                            scaled(hn::Sub(fy, hn::Div(b, SetDouble(200))), 2)};
  const auto channel = [&](size_t row) HWY_ATTR {
    return BytesOfLinear(RowTimes(&constants.matrix[3 * row], xyz), record.byte_begins);
  };
  return {channel(0), channel(1), channel(2)};
}

#endif  // QV_HAS_VECTORS

}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // per target
