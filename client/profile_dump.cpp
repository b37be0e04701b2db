#include "profile_dump.h"

#include <algorithm>
#include <cstdio>

#include "failure.h"
#include "names.h"
#include "profile_gather.h"
#include "profile_names.h"

namespace client {
namespace {

constexpr size_t kMostTags = 100000;  // real profiles have a few dozen

Value OptionalText(const char* text) { return text ? Value(text) : Value(); }

Value OptionalSignature(uint32_t signature) { return signature == 0 ? Value() : Value(Signature{signature}); }

Value VersionText(uint32_t version) {
  char text[16];
  std::snprintf(text, sizeof text, "%x.%x.%x", version >> 24, version >> 20 & 15, version >> 16 & 15);
  return text;
}

Value IdText(const IccHeader& header) {
  const bool any = std::ranges::any_of(header.profileId, [](uint8_t byte) { return byte != 0; });
  return any ? Value(HexBytes(header.profileId)) : Value();
}

Members HeaderView(const IccHeader& header) {
  return {{"size", uint64_t{header.profileSize}},
          {"cmm", OptionalSignature(header.cmmType)},
          {"version", VersionText(header.version)},
          {"class", NamedSignature(header.deviceClass, ClassName(header.deviceClass))},
          {"space", NamedSignature(header.colorSpace, SpaceName(header.colorSpace))},
          {"pcs", NamedSignature(header.connectionSpace, SpaceName(header.connectionSpace))},
          {"date", DateText(header.dateTime)},
          {"magic", Signature{header.signature}},
          {"platform", header.platform == 0 ? Value() : NamedSignature(header.platform, PlatformName(header.platform))},
          {"flags", FlagWords(header.flags, 8, HeaderFlags())},
          {"manufacturer", OptionalSignature(header.manufacturer)},
          {"model", OptionalSignature(header.model)},
          {"attributes", FlagWords(header.attributes, 16, DeviceAttributes())},
          {"intent", Named(header.renderingIntent, IntentName(header.renderingIntent))},
          {"illuminant", Tristimulus(header.illuminant)},
          {"creator", OptionalSignature(header.creator)},
          {"id", IdText(header)}};
}

// Nothing stands for the type of a tag that is too small for one or lies outside of the file.
Value TagRow(const ProfileFile& file, const IccTagEntry& tag) {
  const std::optional<uint32_t> type = tag.size < 4 ? std::nullopt : file.NumberAt(tag.offset);
  return Members{{"signature", Signature{tag.signature}},
                 {"type", type ? Value(Signature{*type}) : Value()},
                 {"offset", uint64_t{tag.offset}},
                 {"size", uint64_t{tag.size}},
                 {"name", OptionalText(TagName(tag.signature))}};
}

}  // namespace

ProfileView ViewOf(const ProfileFile& file, size_t most_items) {
  ProfileRecord profile(file.bytes());
  if (profile.status() != SUCCESS) {
    Fail(file.path(), ": header and tag table do not fit together: ", StatusText(profile.status()));
  }
  const std::span<const IccTagEntry> tags = profile.Tags();
  if (tags.size() > kMostTags) Fail(file.path(), ": too many tags to show: ", tags.size());
  const IccHeader& header = profile.header();
  const Gathering how{most_items, header.connectionSpace == Number("Lab "), header.version < kFormatFour};
  ProfileView view{HeaderView(header), {}, {}};
  for (size_t i = 0; i < tags.size(); ++i) {
    view.tags.push_back(TagRow(file, tags[i]));
    view.values.push_back(GatherTag(&profile, i, how));
  }
  return view;
}

}  // namespace client
