// What a tag says, as values. A function per type, which takes the type's structure.
#pragma once

#include <algorithm>
#include <concepts>

#include "profile_record.h"
#include "profile_value.h"

namespace client {

struct Gathering {
  size_t most;      // a longer list is told by its length and its ends
  bool lab;         // the connection space is Lab, not XYZ
  bool old_format;  // before version 4
};

// Whether the library decodes the type.
bool IsDecodedType(uint32_t type);

// Of the tag at a place of the table. For one that cannot be decoded: the status.
Value GatherTag(ProfileRecord* profile, size_t place, const Gathering& how);
Value GatherTagBytes(std::span<const uint8_t> tag, const Gathering& how);

// profile_gather_simple.cpp
Value GatherNumbers(const IccNumberArrayTagType& tag, const Gathering& how);
Value GatherSignature(const IccSignatureTagType& tag, const Gathering& how);
Value GatherDateTime(const IccDateTimeTagType& tag, const Gathering& how);
Value GatherViewingConditions(const IccViewingConditionsTagType& tag, const Gathering& how);
Value GatherMeasurement(const IccMeasurementTagType& tag, const Gathering& how);
Value GatherText(const IccTextTagType& tag, const Gathering& how);
Value GatherData(const IccDataTagType& tag, const Gathering& how);
Value GatherLocalizedTexts(const IccMultiLocalizedTagType& tag, const Gathering& how);
Value GatherUnknown(const IccUnknownTagType& tag, const Gathering& how);

// profile_gather_tables.cpp
Value GatherCurve(const IccCurveTagType& tag, const Gathering& how);
Value GatherParametricCurve(const IccParametricCurveTagType& tag, const Gathering& how);
Value GatherLut(const IccLutTagType& tag, const Gathering& how);
Value GatherLutWithParts(const IccLutAToBTagType& tag, const Gathering& how);

// profile_gather_lists.cpp
Value GatherChromaticity(const IccChromaticityTagType& tag, const Gathering& how);
Value GatherColorantOrder(const IccColorantOrderTagType& tag, const Gathering& how);
Value GatherColorants(const IccColorantTableTagType& tag, const Gathering& how);
Value GatherNamedColors(const IccNamedColorsTagType& tag, const Gathering& how);
Value GatherSequence(const IccProfileSequenceTagType& tag, const Gathering& how);
Value GatherResponses(const IccResponseCurveSetTagType& tag, const Gathering& how);

// `item` makes a value of an index.
template <std::invocable<size_t> Item>
List ListOf(size_t begin, size_t end, Item&& item) {
  List list;
  for (size_t i = begin; i < end; ++i) list.emplace_back(item(i));
  return list;
}
template <std::invocable<size_t> Item>
Value Items(size_t count, const Gathering& how, Item&& item) {
  constexpr size_t kAtEachEnd = 4;
  if (count <= std::max(how.most, 2 * kAtEachEnd)) return ListOf(0, count, item);
  return Members{{"count", uint64_t{count}},
                 {"first", ListOf(0, kAtEachEnd, item)},
                 {"last", ListOf(count - kAtEachEnd, count, item)}};
}

inline double SignedFixed(uint32_t number) { return static_cast<int32_t>(number) / 65536.0; }

// X, Y, Z.
inline List Tristimulus(const uint32_t* numbers) {
  return ListOf(0, 3, [=](size_t i) { return SignedFixed(numbers[i]); });
}

Value DateText(IccDateTime date);

// Of a registered number: the number and its name.
template <typename Integer>
Value Named(Integer number, const char* name) {
  return Members{{"number", uint64_t{number}}, {"name", name ? name : "unknown"}};
}
Value NamedSignature(uint32_t signature, const char* name);
Value FlagWords(uint64_t bits, int digits, std::span<const struct Flag> flags);

}  // namespace client
