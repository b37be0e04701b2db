// Colorants, named colours, sequences of profiles and response curves.
#include <algorithm>

#include "profile_gather.h"
#include "profile_names.h"
#include "profile_text.h"

namespace client {
namespace {

// Coordinates of the connection space in 16 bits. The old coding of Lab, which 'ncl2' has kept, ends at FF00 hex.
List ConnectionColour(const uint16_t* pcs, bool lab, bool old_coding) {
  if (!lab) return ListOf(0, 3, [=](size_t i) { return pcs[i] / 32768.0; });
  const double unit = old_coding ? 256.0 : 257.0;
  return {pcs[0] / unit / 2.55, pcs[1] / unit - 128, pcs[2] / unit - 128};
}

template <size_t kBytes>
std::string Text(const char (&text)[kBytes]) {
  return Utf8FromBytes({reinterpret_cast<const uint8_t*>(text), kBytes});
}

// Of a profile in a sequence. Its texts are tags of their own.
Value Description(const IccProfileDescription& profile, const Gathering& how) {
  return Members{
      {"manufacturer", Signature{profile.manufacturer}},
      {"model", Signature{profile.model}},
      {"attributes", FlagWords(profile.attributes, 16, DeviceAttributes())},
      {"technology",
       profile.technology == 0 ? Value() : NamedSignature(profile.technology, ValueName(profile.technology))},
      {"manufacturerText", GatherTagBytes({profile.manufacturerText, profile.manufacturerTextBytes}, how)},
      {"modelText", GatherTagBytes({profile.modelText, profile.modelTextBytes}, how)}};
}

Value Unit(const IccResponseCurves& unit, size_t channels, const Gathering& how) {
  List curves;
  const IccResponse* responses = unit.responses;
  for (size_t i = 0; i < channels; responses += unit.counts[i++]) {
    const auto response = [=](size_t k) -> Value {
      return Members{{"code", uint64_t{responses[k].deviceCode}}, {"value", SignedFixed(responses[k].value)}};
    };
    curves.emplace_back(
        Members{{"maximum", Tristimulus(unit.maxima + 3 * i)}, {"responses", Items(unit.counts[i], how, response)}});
  }
  return Members{{"unit", NamedSignature(unit.measurementUnit, MeasurementUnitName(unit.measurementUnit))},
                 {"channels", std::move(curves)}};
}

}  // namespace

Value GatherChromaticity(const IccChromaticityTagType& tag, const Gathering& how) {
  const auto coordinates = [&](size_t i) -> Value {
    return List{Q_2bFixed2bNumberToDouble(tag.coordinates[2 * i]),
                Q_2bFixed2bNumberToDouble(tag.coordinates[2 * i + 1])};
  };
  return Members{{"colorants", Named(tag.colorantType, PhosphorName(tag.colorantType))},
                 {"xy", Items(tag.channelCount, how, coordinates)}};
}

Value GatherColorantOrder(const IccColorantOrderTagType& tag, const Gathering& how) {
  return Members{{"order", Items(tag.colorantCount, how, [&](size_t i) { return uint64_t{tag.order[i]}; })}};
}

Value GatherColorants(const IccColorantTableTagType& tag, const Gathering& how) {
  return Members{{"colorants", Items(tag.colorantCount, how, [&](size_t i) {
                    const IccColorant& colorant = tag.colorants[i];
                    return Members{{"name", Text(colorant.name)},
                                   {how.lab ? "Lab" : "XYZ", ConnectionColour(colorant.pcs, how.lab, how.old_format)}};
                  })}};
}

Value GatherNamedColors(const IccNamedColorsTagType& tag, const Gathering& how) {
  const auto device = [&](const IccNamedColor& colour) {
    return Items(tag.deviceChannels, how, [&](size_t i) { return uint64_t{colour.device[i]}; });
  };
  return Members{{"vendorFlags", Hex(tag.vendorFlags, 8)},
                 {"prefix", Text(tag.prefix)},
                 {"suffix", Text(tag.suffix)},
                 {"deviceChannels", uint64_t{tag.deviceChannels}},
                 {"colours", Items(tag.colorCount, how, [&](size_t i) {
                    const IccNamedColor& colour = tag.colors[i];
                    return Members{{"name", Text(colour.name)},
                                   {how.lab ? "Lab" : "XYZ", ConnectionColour(colour.pcs, how.lab, true)},
                                   {"device", device(colour)}};
                  })}};
}

Value GatherSequence(const IccProfileSequenceTagType& tag, const Gathering& how) {
  return Members{
      {"profiles", Items(tag.profileCount, how, [&](size_t i) { return Description(tag.profiles[i], how); })}};
}

Value GatherResponses(const IccResponseCurveSetTagType& tag, const Gathering& how) {
  return Members{
      {"channels", uint64_t{tag.channelCount}},
      {"units", Items(tag.unitCount, how, [&](size_t i) { return Unit(tag.units[i], tag.channelCount, how); })}};
}

}  // namespace client
