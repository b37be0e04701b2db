// qvclr, the command-line client of the library.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

#include "arguments.h"
#include "commands.h"

namespace {

int Run(CLI::App& app, int argc, char** argv) {
  try {
    // CLI11 takes the words from the back.
    std::vector<std::string> words = client::ArgumentsInUtf8(argc, argv);
    std::ranges::reverse(words);
    app.parse(std::move(words));
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const CLI::RuntimeError& ended) {  // by a command that has told all there is to tell
    return ended.get_exit_code();
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  int status_of_failure = client::kFailed;
  const auto fail = [&](const char* line) {
    std::fprintf(stderr, "qvclr: %s\n", line);
    return status_of_failure;
  };
  try {
    CLI::App app("Colour conversion of images and raw pixels", "qvclr");
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on any system
    client::AddConvertCommand(app);
    client::AddProfileCommand(app);
    client::AddSpacesCommand(app);
    app.get_subcommand(client::kProfileCommand)->preparse_callback([&](size_t) {
      status_of_failure = client::kProfileFailed;
    });
    return Run(app, argc, argv);
  } catch (const std::bad_alloc&) {
    return fail("not enough memory");
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
