// Lookup tables with curves and a matrix.
#include "IccProfile/profile_record.h"
#include "IccProfile/tags/tags.h"

namespace qv {
namespace {

uint64_t PowerWithin32Bits(uint64_t base, uint64_t exponent) {
  uint64_t power = 1;
  for (; exponent > 0 && power != 0 && power != UINT64_MAX; --exponent) power = TimesWithin32Bits(power, base);
  return power;
}

void FailIfTooMany(TagWalk& walk, uint64_t count) {
  if (count == UINT64_MAX) walk.Fail(kInvalidProfile);
}

}  // namespace

// In 'mft1' the two counts stand where ICC.1 has tables already, and in little-endian order: this library's own layout.
template <size_t kWidth>
void DescribeLut(TagWalk& walk) {
  using T = IccLutTagType;
  constexpr bool kHostCounts = kWidth == 1;
  walk.Bytes(QV_AT(inputChannels), 1);
  walk.Bytes(QV_AT(outputChannels), 1);
  walk.Bytes(QV_AT(gridPoints), 1);
  walk.Reserved(1, QV_AT(pad));
  walk.Numbers(4, QV_AT(matrix), 9);
  walk.Numbers(kHostCounts ? 1 : 2, QV_AT(inputEntries), kHostCounts ? 2 : 1);
  walk.Numbers(kHostCounts ? 1 : 2, QV_AT(outputEntries), kHostCounts ? 2 : 1);
  const auto entries = [&](size_t at) { return kHostCounts ? walk.HostNumber(2, at) : walk.Number(2, at); };
  const uint64_t in = walk.Number(1, QV_AT(inputChannels)), out = walk.Number(1, QV_AT(outputChannels));
  const uint64_t nodes = PowerWithin32Bits(walk.Number(1, QV_AT(gridPoints)), in);
  const uint64_t clut = TimesWithin32Bits(nodes, out);
  FailIfTooMany(walk, clut);
  walk.Array(kWidth, QV_AT(inputTables), in * entries(QV_AT(inputEntries)));
  walk.Array(kWidth, QV_AT(clut), clut);
  walk.Array(kWidth, QV_AT(outputTables), out * entries(QV_AT(outputEntries)));
}
template void DescribeLut<1>(TagWalk& walk);
template void DescribeLut<2>(TagWalk& walk);

namespace {

// Either kind of curve by its own signature; both keep their array at the same place.
void DescribeCurveElement(TagWalk& walk) {
  using T = IccCurveTagType;
  static_assert(sizeof(IccParametricCurveTagType) == sizeof(T));
  static_assert(offsetof(IccParametricCurveTagType, parameters) == QV_AT(entries));
  walk.Numbers(4, QV_AT(typeSignature));
  walk.Reserved(4, QV_AT(reserved));
  const uint64_t type = walk.Number(4, QV_AT(typeSignature));
  if (type == Signature("para")) {
    DescribeParametricCurve(walk);
  } else {
    if (type != Signature("curv")) walk.Fail(walk.Decodes() ? kInvalidProfile : kInvalidParameter);
    DescribeCurve(walk);
  }
  walk.Align();
}

void DescribeClut(TagWalk& walk) {
  using T = IccClut;
  using Whole = IccLutAToBTagType;
  walk.Bytes(QV_AT(gridPoints), sizeof T::gridPoints);
  walk.Bytes(QV_AT(precision), 1);
  walk.Reserved(1, QV_AT(reserved), sizeof T::reserved);
  uint64_t count = walk.NumberOfWhole(1, offsetof(Whole, outputChannels));
  const uint64_t dimensions = walk.NumberOfWhole(1, offsetof(Whole, inputChannels));
  if (dimensions > sizeof T::gridPoints) return walk.Fail(kInvalidProfile);
  for (size_t i = 0; i < dimensions; ++i) {
    count = TimesWithin32Bits(count, walk.Number(1, QV_AT(gridPoints) + i));
  }
  FailIfTooMany(walk, count);
  const uint64_t precision = walk.Number(1, QV_AT(precision));
  if (precision != 1 && precision != 2) walk.Fail(kInvalidProfile);
  walk.SetHostNumber(4, QV_AT(elementCount), count);
  walk.Array(precision == 2 ? 2 : 1, QV_AT(elements), count);
}

// The parts stand in the order of their offsets: B curves, matrix, M curves, CLUT, A curves. B and M curves are those
// of the connection space's side.
void DescribeLutWithParts(TagWalk& walk, size_t device_channels_at, size_t connection_channels_at) {
  using T = IccLutAToBTagType;
  walk.Bytes(QV_AT(inputChannels), 1);
  walk.Bytes(QV_AT(outputChannels), 1);
  walk.Reserved(2, QV_AT(reserved2));
  TagWalk::Slot slots[5];
  for (TagWalk::Slot& slot : slots) slot = walk.OffsetSlot();
  const auto curves = [&](const TagWalk::Slot& slot, size_t at, size_t channels_at) {
    constexpr size_t kLeastBytes = 12;
    walk.OptionalPart(slot, at, [&] {
      walk.Records(at, walk.Number(1, channels_at), sizeof(IccCurveElement), kLeastBytes, DescribeCurveElement);
    });
  };
  constexpr size_t kClutHeadBytes = 20;
  curves(slots[0], QV_AT(bCurves), connection_channels_at);
  walk.OptionalPart(slots[1], QV_AT(matrix), [&] { walk.Array(4, QV_AT(matrix), 12); });
  curves(slots[2], QV_AT(mCurves), connection_channels_at);
  walk.OptionalPart(slots[3], QV_AT(clut),
                    [&] { walk.Records(QV_AT(clut), 1, sizeof(IccClut), kClutHeadBytes, DescribeClut); });
  curves(slots[4], QV_AT(aCurves), device_channels_at);
}

}  // namespace

void DescribeLutAToB(TagWalk& walk) {
  using T = IccLutAToBTagType;
  DescribeLutWithParts(walk, QV_AT(inputChannels), QV_AT(outputChannels));
}
void DescribeLutBToA(TagWalk& walk) {
  using T = IccLutAToBTagType;
  DescribeLutWithParts(walk, QV_AT(outputChannels), QV_AT(inputChannels));
}

}  // namespace qv
