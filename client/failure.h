// What ends a command: one line for the user. main() prints it and exits with status 1.
#pragma once

#include <sstream>
#include <stdexcept>

namespace client {

class Failure : public std::runtime_error {
  using runtime_error::runtime_error;
};

template <typename... Parts>
[[noreturn]] void Fail(const Parts&... parts) {
  std::ostringstream line;
  (line << ... << parts);
  throw Failure(line.str());
}

}  // namespace client
