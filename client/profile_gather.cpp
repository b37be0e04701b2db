#include "profile_gather.h"

#include <algorithm>
#include <cstring>

#include "names.h"
#include "profile_file.h"
#include "profile_names.h"

namespace client {
namespace {

struct Gatherer {
  uint32_t type;
  Value (*gather)(const DecodedTag& tag, const Gathering& how);
};

template <typename>
struct StructureOf;
template <typename Structure>
struct StructureOf<Value (*)(const Structure&, const Gathering&)> {
  using Type = Structure;
};
template <auto kGather>
constexpr Gatherer For(const char (&type)[5]) {
  return {Number(type), [](const DecodedTag& tag, const Gathering& how) {
            return kGather(tag.As<typename StructureOf<decltype(kGather)>::Type>(), how);
          }};
}

constexpr Gatherer kGatherers[] = {
    For<&GatherNumbers>("XYZ "),
    For<&GatherChromaticity>("chrm"),
    For<&GatherColorantOrder>("clro"),
    For<&GatherColorants>("clrt"),
    For<&GatherCurve>("curv"),
    For<&GatherData>("data"),
    For<&GatherDateTime>("dtim"),
    For<&GatherLutWithParts>("mAB "),
    For<&GatherLutWithParts>("mBA "),
    For<&GatherMeasurement>("meas"),
    For<&GatherLut>("mft1"),
    For<&GatherLut>("mft2"),
    For<&GatherLocalizedTexts>("mluc"),
    For<&GatherNamedColors>("ncl2"),
    For<&GatherParametricCurve>("para"),
    For<&GatherSequence>("pseq"),
    For<&GatherResponses>("rcs2"),
    For<&GatherNumbers>("sf32"),
    For<&GatherSignature>("sig "),
    For<&GatherText>("text"),
    For<&GatherNumbers>("uf32"),
    For<&GatherNumbers>("ui08"),
    For<&GatherNumbers>("ui16"),
    For<&GatherNumbers>("ui32"),
    For<&GatherNumbers>("ui64"),
    For<&GatherViewingConditions>("view"),
};

const Gatherer* FindGatherer(uint32_t type) {
  const auto* found = std::ranges::find(kGatherers, type, &Gatherer::type);
  return found == std::end(kGatherers) ? nullptr : found;
}

Value Gather(const DecodedTag& tag, const Gathering& how) {
  if (!Done(tag.status())) return Members{{"status", StatusText(tag.status())}};
  const Gatherer* gatherer = FindGatherer(tag.type());
  return gatherer ? gatherer->gather(tag, how) : GatherUnknown(tag.As<IccUnknownTagType>(), how);
}

// The library keeps two counts before the tables of an 'mft1', where ICC.1 has none: its tables have 256 entries. To be
// decoded, a tag that is as long as ICC.1 has it gets them.
std::vector<uint8_t> WithCountsOfLibrary(std::span<const uint8_t> tag) {
  constexpr size_t kInputsAt = 8, kOutputsAt = 9, kGridAt = 10, kTablesAt = 48;
  constexpr uint8_t kCounts[] = {0, 1, 0, 1};  // little-endian
  if (tag.size() < kTablesAt || BigEndian(tag.first(4)) != Number("mft1")) return {};
  uint64_t clut = tag[kOutputsAt];
  for (size_t i = 0; i < tag[kInputsAt] && clut <= tag.size(); ++i) clut *= tag[kGridAt];
  const uint64_t curves = uint64_t{256} * (tag[kInputsAt] + tag[kOutputsAt]);
  if (tag.size() != kTablesAt + curves + clut) return {};
  std::vector<uint8_t> with_counts(tag.begin(), tag.begin() + kTablesAt);
  with_counts.insert(with_counts.end(), std::begin(kCounts), std::end(kCounts));
  with_counts.insert(with_counts.end(), tag.begin() + kTablesAt, tag.end());
  return with_counts;
}

}  // namespace

bool IsDecodedType(uint32_t type) { return FindGatherer(type) != nullptr; }

Value GatherTag(ProfileRecord* profile, size_t place, const Gathering& how) {
  const std::vector<uint8_t> other_form = WithCountsOfLibrary(profile->TagBytes(place));
  return other_form.empty() ? Gather(profile->Decoded(place), how) : GatherTagBytes(other_form, how);
}

Value GatherTagBytes(std::span<const uint8_t> tag, const Gathering& how) {
  if (tag.size() < kTagHeadBytes) return Value();
  ProfileRecord profile;
  profile.SetBytes(Number("desc"), tag);
  return Gather(profile.Decoded(0), how);
}

Value NamedSignature(uint32_t signature, const char* name) {
  return Members{{"signature", Signature{signature}}, {"name", name ? name : "unknown"}};
}

Value FlagWords(uint64_t bits, int digits, std::span<const Flag> flags) {
  List words;
  for (const Flag& flag : flags) words.emplace_back((bits & flag.mask) != 0 ? flag.set : flag.clear);
  return Members{{"bits", Hex(bits, digits)}, {"meaning", std::move(words)}};
}

}  // namespace client
