// qvclr, the command-line client of the library.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

#include "arguments.h"
#include "commands.h"

namespace {

int FailWith(const char* line) {
  std::fprintf(stderr, "qvclr: %s\n", line);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    CLI::App app("Colour conversion of images and raw pixels", "qvclr");
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on any system
    client::AddConvertCommand(app);
    client::AddSpacesCommand(app);
    try {
      // CLI11 takes the words from the back.
      std::vector<std::string> words = client::ArgumentsInUtf8(argc, argv);
      std::ranges::reverse(words);
      app.parse(std::move(words));
    } catch (const CLI::Success& help) {
      return app.exit(help);
    }
    return 0;
  } catch (const std::bad_alloc&) {
    return FailWith("not enough memory");
  } catch (const std::exception& error) {
    return FailWith(error.what());
  }
}
