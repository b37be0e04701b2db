#include "arguments.h"

namespace client {

std::vector<std::string> ArgumentsInUtf8(int argc, char** argv) { return {argv + (argc > 0 ? 1 : 0), argv + argc}; }

}  // namespace client
