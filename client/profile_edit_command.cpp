// qvclr profile new, set, delete and copy-tag. A profile is written only when all is done.
#include <CLI/CLI.hpp>

#include <algorithm>

#include "failure.h"
#include "files.h"
#include "names.h"
#include "profile_edit.h"
#include "profile_file.h"
#include "profile_names.h"
#include "profile_parse.h"
#include "profile_value.h"

namespace client {
namespace {

uint32_t ParseIntent(const std::string& text) {
  constexpr const char* kIntents[] = {"perceptual", "relative", "saturation", "absolute"};
  const auto* found = std::ranges::find(kIntents, text);
  constexpr uint64_t kMost = std::size(kIntents) - 1;
  return static_cast<uint32_t>(found != std::end(kIntents) ? found - kIntents : ParseWhole(text, kMost));
}

template <uint64_t kMost>
uint32_t ParseBits(const std::string& text) {
  return static_cast<uint32_t>(ParseWhole(text, kMost));
}

// A field of the header. The connection space depends on the class before it.
struct Field {
  const char *option, *help;
  uint32_t (*parse)(const std::string& text);
  int32_t (*set)(IccProfileRecord* record, uint32_t value);
  bool required = false;
};
constexpr Field kFields[] = {
    {"--class", "scnr, mntr, prtr, link, spac, abst or nmcl", ParseSignature, Q_SetICCDeviceClass, true},
    {"--space", "colour space: RGB, GRAY, CMYK, Lab ...", ParseSignature, Q_SetICCColorSpace, true},
    {"--pcs", "connection space: XYZ or Lab; any of a device link", ParseSignature, Q_SetICCConnectionSpace, true},
    {"--cmm", "preferred colour engine", ParseSignature, Q_SetICCCMMType},
    {"--platform", "APPL, MSFT, SGI or SUNW", ParseSignature, Q_SetICCPrimaryPlatform},
    {"--flags", "1: embedded; 2: not to be used without the embedding image; 3: both", ParseBits<3>, Q_SetICCFlags},
    {"--manufacturer", "of the device", ParseSignature, Q_SetICCDevManufacturer},
    {"--model", "of the device", ParseSignature, Q_SetICCDevModel},
    {"--attributes", "sum of 1 transparency, 2 matte, 4 negative, 8 black and white", ParseBits<15>,
     [](IccProfileRecord* record, uint32_t value) { return Q_SetICCDeviceAttributes(record, value); }},
    {"--intent", "perceptual, relative, saturation or absolute", ParseIntent, Q_SetICCRenderingIntent},
    {"--creator", "of the profile", ParseSignature, Q_SetICCCreator},
};

struct Options {
  std::string file, source, tag, type, date, from;
  std::optional<std::string> value;
  std::vector<std::string> more_values;
  std::string fields[std::size(kFields)];
};

void New(const Options& options) {
  ProfileRecord profile;
  for (size_t i = 0; i < std::size(kFields); ++i) {
    const Field& field = kFields[i];
    if (options.fields[i].empty()) continue;
    const int32_t status = field.set(profile.record(), field.parse(options.fields[i]));
    if (status != SUCCESS) Fail(field.option, " ", options.fields[i], ": ", StatusText(status));
  }
  const IccDateTime date = options.date.empty() ? Now() : ParseDate(options.date);
  Q_SetICCDateTime(profile.record(), &date);
  WriteProfile(options.file, profile.Generate());
}

// `change` edits the profile of the file.
template <typename Change>
void Edit(const std::string& path, Change&& change) {
  const ProfileFile file(path);
  ProfileRecord profile(file.ForEditing());
  if (profile.status() != SUCCESS) Fail(path, ": ", StatusText(profile.status()));
  change(&profile);
  WriteProfile(path, profile.Generate());
}

void Set(const Options& options) {
  NewTag tag{ParseSignature(options.tag), ParseSignature(options.type), options.more_values};
  if (options.value) tag.words.insert(tag.words.begin(), *options.value);
  if (!options.from.empty() && !tag.words.empty()) Fail("values and --from exclude each other");
  Edit(options.file, [&](ProfileRecord* profile) {
    if (options.from.empty()) {
      SetTag(profile, tag);
    } else {
      SetTag(profile, tag, ReadFile(options.from));
    }
  });
}

void Delete(const Options& options) {
  const uint32_t signature = ParseSignature(options.tag);
  Edit(options.file, [&](ProfileRecord* profile) {
    if (!profile->Remove(signature)) Fail(options.file, ": there is no tag ", Quoted(signature));
  });
}

void CopyTag(const Options& options) {
  const uint32_t signature = ParseSignature(options.tag);
  const ProfileRecord from(ProfileFile(options.source).bytes());
  if (from.status() != SUCCESS) Fail(options.source, ": ", StatusText(from.status()));
  const std::span<const IccTagEntry> tags = from.Tags();
  const auto found = std::ranges::find_if(tags, [&](IccTagEntry tag) { return tag.signature == signature; });
  if (found == tags.end()) Fail(options.source, ": there is no tag ", Quoted(signature));
  const std::span<const uint8_t> bytes = from.TagBytes(static_cast<size_t>(found - tags.begin()));
  if (bytes.size() < kTagHeadBytes) Fail(options.source, ": tag ", Quoted(signature), " is damaged");
  Edit(options.file, [&](ProfileRecord* profile) { profile->SetBytes(signature, bytes); });
}

struct Command {
  const char *name, *help;
  void (*run)(const Options& options);
  void (*add_options)(CLI::App* command, Options* options);
};
constexpr Command kCommands[] = {
    {"new", "Make a profile of version 4.2 without tags", New,
     [](CLI::App* command, Options* options) {
       command->add_option("FILE", options->file, "the profile to write")->required();
       for (size_t i = 0; i < std::size(kFields); ++i) {
         const Field& field = kFields[i];
         command->add_option(field.option, options->fields[i], field.help)->required(field.required);
       }
       command->add_option("--date", options->date, "YYYY-MM-DD hh:mm:ss (now, in UTC)");
     }},
    {"set", "Set a tag of a profile; it takes the place of one that is there", Set,
     [](CLI::App* command, Options* options) {
       command->add_option("FILE", options->file, "the profile to edit")->required();
       command->add_option("TAG", options->tag, "signature of the tag")->required();
       command->add_option("VALUE", options->value, "what the tag holds");
       command->add_option("MORE", options->more_values, "the same");  // CLI11 would take a "[x]" here for a list
       command->add_option("--type", options->type, "its type")->required();
       command->add_option("--from", options->from, "file with the content of the tag");
       command->footer("Values by type:\n" + TypesOfWords());
     }},
    {"delete", "Delete a tag of a profile", Delete,
     [](CLI::App* command, Options* options) {
       command->add_option("FILE", options->file, "the profile to edit")->required();
       command->add_option("TAG", options->tag, "signature of the tag")->required();
     }},
    {"copy-tag", "Copy a tag, byte for byte, to another profile", CopyTag,
     [](CLI::App* command, Options* options) {
       command->add_option("FROM", options->source, "a profile of any version")->required();
       command->add_option("TO", options->file, "the profile to edit")->required();
       command->add_option("TAG", options->tag, "signature of the tag")->required();
     }},
};

}  // namespace

void AddProfileEditCommands(CLI::App* group) {
  for (const Command& row : kCommands) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = group->add_subcommand(row.name, row.help);
    row.add_options(command, options.get());
    command->callback([options, run = row.run] { run(*options); });
  }
}

}  // namespace client
