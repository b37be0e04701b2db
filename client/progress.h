// A line on the terminal that tells how far a long task is.
#pragma once

#include <chrono>
#include <cstdint>

namespace client {

class Progress {
 public:
  Progress(int64_t total, bool quiet);
  ~Progress();  // takes the line away
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Reached(int64_t done);

 private:
  using Clock = std::chrono::steady_clock;
  int64_t total_;
  bool shown_ = false, silent_;
  Clock::time_point next_;
};

// Whether the error stream is a terminal.
bool ErrorsGoToTerminal();

}  // namespace client
