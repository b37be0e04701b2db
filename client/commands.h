// The subcommands of qvclr, one file each. Each adds itself to the command line and runs as its callback.
#pragma once

namespace CLI {
class App;
}

namespace client {

void AddConvertCommand(CLI::App& app);
void AddSpacesCommand(CLI::App& app);

}  // namespace client
