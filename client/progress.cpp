#include "progress.h"

#include <cstdio>

namespace client {

Progress::Progress(int64_t total, bool quiet)
    : total_(total), silent_(quiet || !ErrorsGoToTerminal()), next_(Clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
  if (shown_) std::fputs("\r                \r", stderr);
}

void Progress::Reached(int64_t done) {
  if (silent_ || Clock::now() < next_) return;
  next_ = Clock::now() + std::chrono::milliseconds(200);
  shown_ = true;
  std::fprintf(stderr, "\r%3d %% converted", static_cast<int>(done * 100 / total_));
  std::fflush(stderr);
}

}  // namespace client
