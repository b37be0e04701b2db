// The subcommands of qvclr, one file each. Each adds itself to the command line and runs as its callback.
#pragma once

namespace CLI {
class App;
}

namespace client {

void AddConvertCommand(CLI::App& app);
void AddProfileCommand(CLI::App& app);
void AddSpacesCommand(CLI::App& app);

// Exit statuses. A command of profiles that fails is told apart from one that found defects.
inline constexpr int kFailed = 1, kDefectsFound = 1, kProfileFailed = 2;
inline constexpr const char* kProfileCommand = "profile";

}  // namespace client
