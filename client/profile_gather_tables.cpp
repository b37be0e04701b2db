// Curves and lookup tables.
#include "profile_gather.h"
#include "profile_names.h"

namespace client {
namespace {

// Numbers of one or two bytes.
Value Entries(const void* numbers, size_t width, uint64_t count, const Gathering& how) {
  return Items(count, how, [=](size_t i) -> uint64_t {
    return width == 1 ? static_cast<const uint8_t*>(numbers)[i] : static_cast<const uint16_t*>(numbers)[i];
  });
}

Value Curves(const IccCurveElement* curves, size_t count, const Gathering& how) {
  if (!curves) return Value();
  return ListOf(0, count, [&](size_t i) {
    const bool parametric = curves[i].curve.typeSignature == Number("para");
    return parametric ? GatherParametricCurve(curves[i].parametric, how) : GatherCurve(curves[i].curve, how);
  });
}

Value Fixed(const uint32_t* numbers, size_t count) {
  if (!numbers) return Value();
  return ListOf(0, count, [=](size_t i) { return SignedFixed(numbers[i]); });
}

uint64_t Power(uint64_t base, unsigned exponent) {
  uint64_t power = 1;
  for (; exponent > 0; --exponent) power *= base;  // within 32 bits in all that the library decodes
  return power;
}

Value Clut(const IccClut* clut, size_t dimensions, const Gathering& how) {
  if (!clut) return Value();
  return Members{{"gridPoints", ListOf(0, dimensions, [=](size_t i) { return uint64_t{clut->gridPoints[i]}; })},
                 {"precision", uint64_t{clut->precision}},
                 {"elements", Entries(clut->elements, clut->precision, clut->elementCount, how)}};
}

}  // namespace

Value GatherCurve(const IccCurveTagType& tag, const Gathering& how) {
  if (tag.entryCount == 0) return Members{{"kind", "identity"}};
  if (tag.entryCount == 1) return Members{{"kind", "gamma"}, {"gamma", Q_U8Fixed8NumberToDouble(tag.entries[0])}};
  return Members{{"kind", "sampled"}, {"points", Entries(tag.entries, sizeof *tag.entries, tag.entryCount, how)}};
}

Value GatherParametricCurve(const IccParametricCurveTagType& tag, const Gathering& /*how*/) {
  const auto count = static_cast<size_t>(Q_GetParametricCurveNumberOfParameters(tag.functionType));
  return Members{{"kind", "parametric"},
                 {"function", uint64_t{tag.functionType}},
                 {"formula", FunctionFormula(tag.functionType)},
                 {"parameters", Fixed(tag.parameters, count)}};
}

Value GatherLut(const IccLutTagType& tag, const Gathering& how) {
  const size_t width = tag.typeSignature == Number("mft1") ? 1 : 2;
  const uint64_t in = tag.inputChannels, out = tag.outputChannels;
  return Members{{"inputChannels", in},
                 {"outputChannels", out},
                 {"gridPoints", uint64_t{tag.gridPoints}},
                 {"matrix", Fixed(tag.matrix, 9)},
                 {"inputEntries", uint64_t{tag.inputEntries}},
                 {"outputEntries", uint64_t{tag.outputEntries}},
                 {"inputTables", Entries(tag.inputTables, width, in * tag.inputEntries, how)},
                 {"clut", Entries(tag.clut, width, Power(tag.gridPoints, tag.inputChannels) * out, how)},
                 {"outputTables", Entries(tag.outputTables, width, out * tag.outputEntries, how)}};
}

Value GatherLutWithParts(const IccLutAToBTagType& tag, const Gathering& how) {
  const bool from_device = tag.typeSignature == Number("mAB ");
  const size_t device_channels = from_device ? tag.inputChannels : tag.outputChannels;
  const size_t connection_channels = from_device ? tag.outputChannels : tag.inputChannels;
  return Members{{"inputChannels", uint64_t{tag.inputChannels}},
                 {"outputChannels", uint64_t{tag.outputChannels}},
                 {"aCurves", Curves(tag.aCurves, device_channels, how)},
                 {"clut", Clut(tag.clut, tag.inputChannels, how)},
                 {"mCurves", Curves(tag.mCurves, connection_channels, how)},
                 {"matrix", Fixed(tag.matrix, 12)},
                 {"bCurves", Curves(tag.bCurves, connection_channels, how)}};
}

}  // namespace client
