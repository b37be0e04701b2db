// qvclr profile dump FILE, qvclr profile check FILE: what an ICC profile says, and whether it keeps to ICC.1.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "commands.h"
#include "profile_check.h"
#include "profile_dump.h"

namespace client {
namespace {

struct Options {
  std::string file;
  bool json = false;
};

void Print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void Dump(const Options& options) {
  ProfileView view = ViewOf(ProfileFile(options.file));
  if (options.json) {
    Print(AsJson(Members{{"header", std::move(view.header)}, {"tags", std::move(view.tags)}}));
  } else {
    Print(AsLines(view.header) + "\n" + std::to_string(view.tags.size()) + " tags\n" + AsTable(view.tags));
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

void AddFileCommand(CLI::App* group, const char* name, const char* help, void (*run)(const Options&)) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = group->add_subcommand(name, help);
  command->add_option("FILE", options->file, "an ICC profile")->required();
  command->add_flag("--json", options->json, "print JSON");
  command->callback([options, run] { run(*options); });
}

}  // namespace

void AddProfileCommand(CLI::App& app) {
  CLI::App* group = app.add_subcommand(kProfileCommand, "Look into an ICC profile");
  group->require_subcommand(1);
  AddFileCommand(group, "dump", "Print the header and the tag table", Dump);
  AddFileCommand(group, "check", "List what is wrong with a profile; status 1 when anything is", Check);
  group->footer("Status 2: there is no profile that could be read.");
}

}  // namespace client
