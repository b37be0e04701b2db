#include "profile_dump.h"

#include <cstdio>

#include "failure.h"
#include "names.h"
#include "profile_names.h"

namespace client {
namespace {

constexpr size_t kMostTags = 100000;  // real profiles have a few dozen

Value OptionalText(const char* text) { return text ? Value(text) : Value(); }

Value OptionalSignature(uint32_t signature) { return signature == 0 ? Value() : Value(Signature{signature}); }

Value NamedSignature(uint32_t signature, const char* name) {
  return Members{{"signature", Signature{signature}}, {"name", name ? name : "unknown"}};
}

Value VersionText(uint32_t version) {
  char text[16];
  std::snprintf(text, sizeof text, "%x.%x.%x", version >> 24, version >> 20 & 15, version >> 16 & 15);
  return text;
}

Value DateText(IccDateTime date) {
  char text[40];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", date.year, date.month, date.day, date.hours,
                date.minutes, date.seconds);
  return text;
}

Value FlagWords(uint64_t bits, int digits, std::span<const Flag> flags) {
  List words;
  for (const Flag& flag : flags) words.emplace_back((bits & flag.mask) != 0 ? flag.set : flag.clear);
  return Members{{"bits", Hex(bits, digits)}, {"meaning", std::move(words)}};
}

Value IdText(const IccHeader& header) {
  std::string text;
  bool any = false;
  for (const uint8_t byte : header.profileId) {
    text += Hex(byte, 2).substr(2);
    any = any || byte != 0;
  }
  return any ? Value(text) : Value();
}

Members HeaderView(const IccHeader& header) {
  List illuminant;
  for (size_t i = 0; i < 3; ++i) illuminant.emplace_back(static_cast<int32_t>(header.illuminant[i]) / 65536.0);
  const char* intent = IntentName(header.renderingIntent);
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
          {"intent", Members{{"number", uint64_t{header.renderingIntent}}, {"name", intent ? intent : "unknown"}}},
          {"illuminant", std::move(illuminant)},
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

ProfileView ViewOf(const ProfileFile& file) {
  const ProfileRecord profile(file.bytes());
  if (profile.status() != SUCCESS) {
    Fail(file.path(), ": header and tag table do not fit together: ", StatusText(profile.status()));
  }
  if (profile.Tags().size() > kMostTags) Fail(file.path(), ": too many tags to show: ", profile.Tags().size());
  ProfileView view{HeaderView(profile.header()), {}};
  for (const IccTagEntry& tag : profile.Tags()) view.tags.push_back(TagRow(file, tag));
  return view;
}

}  // namespace client
