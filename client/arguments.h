// The words of the command line behind the program's name, in UTF-8 on every system.
#pragma once

#include <string>
#include <vector>

namespace client {

std::vector<std::string> ArgumentsInUtf8(int argc, char** argv);

}  // namespace client
