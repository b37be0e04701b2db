// Numbers, texts and conditions.
#include <algorithm>
#include <cstdio>

#include "profile_file.h"
#include "profile_gather.h"
#include "profile_names.h"
#include "profile_text.h"

namespace client {
namespace {

template <typename Integer>
Integer At(const void* values, size_t i) {
  return static_cast<const Integer*>(values)[i];
}

struct NumberType {
  uint32_t type;
  Value (*at)(const void* values, size_t i);
};
constexpr NumberType kNumberTypes[] = {
    {Number("XYZ "),
     [](const void* values, size_t i) -> Value { return Tristimulus(static_cast<const uint32_t*>(values) + 3 * i); }},
    {Number("sf32"), [](const void* values, size_t i) -> Value { return SignedFixed(At<uint32_t>(values, i)); }},
    {Number("uf32"),
     [](const void* values, size_t i) -> Value { return Q_2bFixed2bNumberToDouble(At<uint32_t>(values, i)); }},
    {Number("ui08"), [](const void* values, size_t i) -> Value { return uint64_t{At<uint8_t>(values, i)}; }},
    {Number("ui16"), [](const void* values, size_t i) -> Value { return uint64_t{At<uint16_t>(values, i)}; }},
    {Number("ui32"), [](const void* values, size_t i) -> Value { return uint64_t{At<uint32_t>(values, i)}; }},
    {Number("ui64"), [](const void* values, size_t i) -> Value { return At<uint64_t>(values, i); }},
};

Members SizeAndBegin(std::span<const uint8_t> bytes) {
  constexpr size_t kMostShown = 16;
  return {{"bytes", uint64_t{bytes.size()}}, {"begin", HexBytes(bytes.first(std::min(bytes.size(), kMostShown)))}};
}

std::string TwoLetters(uint16_t code) {
  const char letters[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
  const bool both = std::ranges::all_of(letters, [](char c) { return c > ' ' && c <= '~'; });
  return both ? std::string(letters, 2) : Hex(code, 4);
}

}  // namespace

Value DateText(IccDateTime date) {
  char text[40];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", date.year, date.month, date.day, date.hours,
                date.minutes, date.seconds);
  return text;
}

Value GatherNumbers(const IccNumberArrayTagType& tag, const Gathering& how) {
  const uint32_t type = tag.typeSignature;
  const NumberType& numbers = *std::ranges::find(kNumberTypes, type, &NumberType::type);
  return Members{{"values", Items(tag.valueCount, how, [&](size_t i) { return numbers.at(tag.values, i); })}};
}

Value GatherSignature(const IccSignatureTagType& tag, const Gathering& /*how*/) {
  return NamedSignature(tag.signatureValue, ValueName(tag.signatureValue));
}

Value GatherDateTime(const IccDateTimeTagType& tag, const Gathering& /*how*/) {
  return Members{{"date", DateText(tag.dateTime)}};
}

Value GatherViewingConditions(const IccViewingConditionsTagType& tag, const Gathering& /*how*/) {
  return Members{{"illuminant", Tristimulus(tag.illuminant)},
                 {"surround", Tristimulus(tag.surround)},
                 {"illuminantType", Named(tag.illuminantType, IlluminantName(tag.illuminantType))}};
}

Value GatherMeasurement(const IccMeasurementTagType& tag, const Gathering& /*how*/) {
  return Members{{"observer", Named(tag.observer, ObserverName(tag.observer))},
                 {"backing", Tristimulus(tag.backing)},
                 {"geometry", Named(tag.geometry, GeometryName(tag.geometry))},
                 {"flare", Q_2bFixed2bNumberToDouble(tag.flare)},
                 {"illuminantType", Named(tag.illuminantType, IlluminantName(tag.illuminantType))}};
}

Value GatherText(const IccTextTagType& tag, const Gathering& /*how*/) {
  const std::string_view text(tag.text);
  return Members{{"text", Utf8FromBytes({reinterpret_cast<const uint8_t*>(text.data()), text.size()})}};
}

Value GatherData(const IccDataTagType& tag, const Gathering& /*how*/) {
  const std::span<const uint8_t> bytes(tag.data, tag.dataLength);
  if (tag.dataFlag == 0) return Members{{"kind", "ASCII"}, {"text", Utf8FromBytes(bytes)}};
  Members members = SizeAndBegin(bytes);
  members.insert(members.begin(), tag.dataFlag == 1 ? Member{"kind", "binary"} : Member{"kind", Hex(tag.dataFlag, 8)});
  return members;
}

Value GatherLocalizedTexts(const IccMultiLocalizedTagType& tag, const Gathering& how) {
  return Members{{"texts", Items(tag.recordCount, how, [&](size_t i) {
                    const IccLocalizedText& text = tag.records[i];
                    return Members{{"language", TwoLetters(text.language) + "-" + TwoLetters(text.country)},
                                   {"text", Utf8FromUtf16({text.text, text.textBytes / sizeof *text.text})}};
                  })}};
}

// Descriptions before version 4 have a type of their own, which the library does not decode: a count, ASCII, and the
// same in other codings behind it.
Value GatherUnknown(const IccUnknownTagType& tag, const Gathering& /*how*/) {
  constexpr size_t kCountBytes = 4;
  const std::span<const uint8_t> bytes(tag.data, tag.dataSize);
  Members members = SizeAndBegin(bytes);
  if (tag.typeSignature == Number("desc") && bytes.size() >= kCountBytes) {
    const std::span<const uint8_t> texts = bytes.subspan(kCountBytes);
    const uint32_t count = BigEndian(bytes.first(kCountBytes));
    if (count <= texts.size()) members = {{"text", Utf8FromBytes(texts.first(count))}};
  }
  return members;
}

}  // namespace client
