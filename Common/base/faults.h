// Tests make the n-th allocation or file call fail with these; nothing in the library arms them.
#pragma once

#include <atomic>
#include <cstdint>

namespace qv {

class FaultHook {
 public:
  void FailNth(int64_t n) { countdown_.store(n, std::memory_order_relaxed); }  // 1: the next call; 0: none
  bool Strikes() {
    return countdown_.load(std::memory_order_relaxed) > 0 && countdown_.fetch_sub(1, std::memory_order_relaxed) == 1;
  }
  bool Armed() const { return countdown_.load(std::memory_order_relaxed) > 0; }

 private:
  std::atomic<int64_t> countdown_{0};
};

inline constinit FaultHook allocation_faults;
inline constinit FaultHook file_faults;

}  // namespace qv
