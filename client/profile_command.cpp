// qvclr profile dump FILE, qvclr profile check FILE: what an ICC profile says, and whether it keeps to ICC.1. The
// commands that write profiles are in profile_edit_command.cpp, those for images in profile_image_command.cpp.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "commands.h"
#include "profile_check.h"
#include "profile_dump.h"
#include "profile_edit.h"

namespace client {
namespace {

struct Options {
  std::string file;
  bool json = false, all = false;
};

void Print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void Dump(const Options& options) {
  constexpr size_t kMostInText = 8, kMostInJson = 1024;
  const size_t most = options.all ? SIZE_MAX : options.json ? kMostInJson : kMostInText;
  ProfileView view = ViewOf(ProfileFile(options.file), most);
  if (options.json) {
    for (size_t i = 0; i < view.tags.size(); ++i) {
      std::get<Members>(view.tags[i]).push_back({"value", std::move(view.values[i])});
    }
    Print(AsJson(Members{{"header", std::move(view.header)}, {"tags", std::move(view.tags)}}));
    return;
  }
  Print(AsOutline(view.header, 0) + "\n" + std::to_string(view.tags.size()) + " tags\n" + AsTable(view.tags));
  for (size_t i = 0; i < view.tags.size(); ++i) {
    const Member& signature = std::get<Members>(view.tags[i])[0];
    Print("\n" + Quoted(std::get<Signature>(signature.value).number) + "\n");
    Print(AsOutline(std::get<Members>(view.values[i]), 2));
  }
}

void Check(const Options& options) {
  const std::vector<std::string> lines = DefectsOf(ProfileFile(options.file)).Lines();
  if (options.json) {
    Print(AsJson(Members{{"defects", List(lines.begin(), lines.end())}}));
  } else {
    if (lines.empty()) Print("no defects\n");
    for (const std::string& line : lines) Print(line + "\n");
  }
  if (!lines.empty()) throw CLI::RuntimeError(kDefectsFound);
}

CLI::App* AddFileCommand(CLI::App* group, const char* name, const char* help, const std::shared_ptr<Options>& options,
                         void (*run)(const Options&)) {
  CLI::App* command = group->add_subcommand(name, help);
  command->add_option("FILE", options->file, "an ICC profile")->required();
  command->add_flag("--json", options->json, "print JSON");
  command->callback([options, run] { run(*options); });
  return command;
}

}  // namespace

void AddProfileCommand(CLI::App& app) {
  CLI::App* group =
      app.add_subcommand(kProfileCommand, "Look into an ICC profile, make one, edit it, or keep it in an image");
  group->require_subcommand(1);
  const auto options = std::make_shared<Options>();
  CLI::App* dump = AddFileCommand(group, "dump", "Print the header, the tag table and the tags", options, Dump);
  dump->add_flag("--all", options->all, "long lists in full");
  AddFileCommand(group, "check", "List what is wrong with a profile; status 1 when anything is", options, Check);
  AddProfileEditCommands(group);
  AddProfileImageCommands(group);
  group->footer("Status 2: there is no profile that could be read, or none could be made.");
}

}  // namespace client
