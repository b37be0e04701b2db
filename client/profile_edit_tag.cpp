#include <algorithm>
#include <limits>

#include "failure.h"
#include "profile_edit.h"
#include "profile_file.h"
#include "profile_gather.h"
#include "profile_names.h"
#include "profile_parse.h"
#include "profile_text.h"

namespace client {
namespace {

using Words = std::vector<std::string>;

struct Maker {
  uint32_t type;
  const char* words;
  size_t least, most;  // words
  void (*set)(ProfileRecord* profile, const NewTag& tag);
};

template <typename Structure>
void Set(ProfileRecord* profile, const NewTag& tag, const Structure& structure) {
  profile->Set(tag.signature, tag.type, &structure);
}

template <auto kParse>
auto ParseAll(std::span<const std::string> words) {
  std::vector<decltype(kParse(words[0]))> numbers;
  for (const std::string& word : words) numbers.push_back(kParse(word));
  return numbers;
}

template <typename Integer>
Integer ParseInteger(const std::string& text) {
  return static_cast<Integer>(ParseWhole(text, std::numeric_limits<Integer>::max()));
}

template <auto kParse, size_t kGroup = 1>
void SetNumbers(ProfileRecord* profile, const NewTag& tag) {
  if (tag.words.size() % kGroup != 0) Fail(tag.words.size(), " numbers are not in groups of ", kGroup);
  auto values = ParseAll<kParse>(tag.words);
  Set(profile, tag,
      IccNumberArrayTagType{.values = values.data(), .valueCount = static_cast<uint32_t>(values.size() / kGroup)});
}

void SetSignature(ProfileRecord* profile, const NewTag& tag) {
  Set(profile, tag, IccSignatureTagType{.signatureValue = ParseSignature(tag.words[0])});
}

void SetDateTime(ProfileRecord* profile, const NewTag& tag) {
  Set(profile, tag, IccDateTimeTagType{.dateTime = ParseDate(tag.words[0])});
}

void SetCurve(ProfileRecord* profile, const NewTag& tag) {
  std::vector<uint16_t> entries;
  const bool identity = tag.words.size() == 1 && tag.words[0] == "identity";
  if (tag.words.size() > 1) entries = ParseAll<ParseInteger<uint16_t>>(tag.words);
  if (tag.words.size() == 1 && !identity) entries.push_back(ParseFixed8(tag.words[0]));
  const auto count = static_cast<uint32_t>(entries.size());
  entries.push_back(0);  // an array there must be
  Set(profile, tag, IccCurveTagType{.entryCount = count, .entries = entries.data()});
}

void SetParametricCurve(ProfileRecord* profile, const NewTag& tag) {
  const auto function = ParseInteger<uint16_t>(tag.words[0]);
  auto parameters = ParseAll<ParseSignedFixed16>(std::span(tag.words).subspan(1));
  const auto count = static_cast<size_t>(Q_GetParametricCurveNumberOfParameters(function));
  if (count == 0) Fail("there is no function ", function);
  if (parameters.size() != count) Fail("function ", function, " has ", count, " parameters, not ", parameters.size());
  Set(profile, tag, IccParametricCurveTagType{.functionType = function, .parameters = parameters.data()});
}

void SetLocalizedTexts(ProfileRecord* profile, const NewTag& tag) {
  constexpr size_t kLanguageBytes = 6;  // "en-US="
  const auto code = [](std::string_view two) { return static_cast<uint16_t>(uint8_t(two[0]) << 8 | uint8_t(two[1])); };
  std::vector<std::u16string> texts;
  std::vector<IccLocalizedText> records;
  for (std::string_view word : tag.words) {
    const bool told = word.size() >= kLanguageBytes && word[2] == '-' && word[5] == '=';
    if (!told && tag.words.size() > 1) Fail("'", word, "' is no text with its language, like en-US=Text");
    const std::string_view language = told ? word.substr(0, kLanguageBytes) : "en-US=";
    if (told) word.remove_prefix(kLanguageBytes);
    const std::optional<std::u16string> text = Utf16FromUtf8(word);
    if (!text) Fail("a text is not in UTF-8");
    texts.push_back(*text);
    records.push_back({.language = code(language.substr(0, 2)),
                       .country = code(language.substr(3, 2)),
                       .textBytes = static_cast<uint32_t>(sizeof(char16_t) * text->size()),
                       .text = nullptr});
  }
  for (size_t i = 0; i < texts.size(); ++i) records[i].text = reinterpret_cast<uint16_t*>(texts[i].data());
  Set(profile, tag,
      IccMultiLocalizedTagType{.recordCount = static_cast<uint32_t>(records.size()), .records = records.data()});
}

// The head of the type with more behind it.
class TagBytes {
 public:
  explicit TagBytes(uint32_t type) { Number(type).Number(0); }

  TagBytes& Number(uint32_t number) {
    bytes_.resize(bytes_.size() + sizeof number);
    StoreBigEndian(number, std::span(bytes_).last(sizeof number));
    return *this;
  }
  template <typename Content>
  TagBytes& Add(const Content& content) {
    bytes_.insert(bytes_.end(), content.begin(), content.end());
    return *this;
  }
  operator std::span<const uint8_t>() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

std::string Ascii(const std::string& word) {
  if (std::ranges::any_of(word, [](char c) { return (c & 0x80) != 0; })) Fail("'", word, "' is not ASCII, as mluc can");
  return word + '\0';
}

// Set by their bytes: the library measures texts in units of 16 bits and copies half of them.
void SetText(ProfileRecord* profile, const NewTag& tag) {
  profile->SetBytes(tag.signature, TagBytes(tag.type).Add(Ascii(tag.words[0])));
}
void SetData(ProfileRecord* profile, const NewTag& tag) {
  constexpr uint32_t kAscii = 0;
  profile->SetBytes(tag.signature, TagBytes(tag.type).Number(kAscii).Add(Ascii(tag.words[0])));
}

constexpr size_t kAnyNumber = SIZE_MAX;
constexpr Maker kMakers[] = {
    {Number("XYZ "), "X Y Z ...", 3, kAnyNumber, SetNumbers<ParseSignedFixed16, 3>},
    {Number("mluc"), "TEXT, or en-US=TEXT de-DE=TEXT ...", 1, kAnyNumber, SetLocalizedTexts},
    {Number("text"), "TEXT in ASCII", 1, 1, SetText},
    {Number("curv"), "identity, a gamma, or points from 0 to 65535", 1, kAnyNumber, SetCurve},
    {Number("para"), "FUNCTION PARAMETER ... (0: g, 1: g a b, 2: g a b c, 3: g a b c d, 4: g a b c d e f)", 1,
     kAnyNumber, SetParametricCurve},
    {Number("sig "), "SIGNATURE", 1, 1, SetSignature},
    {Number("dtim"), "\"YYYY-MM-DD hh:mm:ss\"", 1, 1, SetDateTime},
    {Number("sf32"), "signed fixed-point numbers", 1, kAnyNumber, SetNumbers<ParseSignedFixed16>},
    {Number("uf32"), "unsigned fixed-point numbers", 1, kAnyNumber, SetNumbers<ParseFixed16>},
    {Number("ui08"), "whole numbers", 1, kAnyNumber, SetNumbers<ParseInteger<uint8_t>>},
    {Number("ui16"), "whole numbers", 1, kAnyNumber, SetNumbers<ParseInteger<uint16_t>>},
    {Number("ui32"), "whole numbers", 1, kAnyNumber, SetNumbers<ParseInteger<uint32_t>>},
    {Number("ui64"), "whole numbers", 1, kAnyNumber, SetNumbers<ParseInteger<uint64_t>>},
    {Number("data"), "TEXT in ASCII, or --from FILE for binary data", 1, 1, SetData},
};

}  // namespace

void SetTag(ProfileRecord* profile, const NewTag& tag) {
  const auto* maker = std::ranges::find(kMakers, tag.type, &Maker::type);
  if (maker == std::end(kMakers)) Fail("a tag of type ", Quoted(tag.type), " cannot be made from words");
  if (tag.words.size() < maker->least || tag.words.size() > maker->most) {
    Fail("a tag of type ", Quoted(tag.type), " needs other values: ", maker->words);
  }
  maker->set(profile, tag);
}

void SetTag(ProfileRecord* profile, const NewTag& tag, const std::vector<uint8_t>& content) {
  constexpr uint32_t kBinary = 1;
  const bool data = tag.type == Number("data");
  if (!data && IsDecodedType(tag.type)) {
    Fail("--from is for type 'data' and types that are not decoded, not for ", Quoted(tag.type));
  }
  TagBytes bytes(tag.type);
  if (data) bytes.Number(kBinary);
  profile->SetBytes(tag.signature, bytes.Add(content));
}

std::string TypesOfWords() {
  std::string lines;
  for (const Maker& maker : kMakers) lines += "  " + SignatureText(maker.type) + "  " + maker.words + "\n";
  return lines;
}

}  // namespace client
