// Memory of which it is known who may touch it, and what the process holds of its system.
#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "support/system.h"

namespace qv_test {

size_t OpenHandles();  // each system has its own count

inline const uint8_t* Address(uintptr_t address) { return reinterpret_cast<const uint8_t*>(address); }

struct Range {
  const char* what;
  const uint8_t* begin;
  size_t bytes;
  bool readable, writable;
};

// Five good pages between two inaccessible ones; the fourth is read-only.
struct Ranges {
  const size_t page = PageSize();
  GuardedBuffer pages{5 * page - 1, GuardedBuffer::Flush::kStart};
  uint8_t *const good = pages.data(), *const read_only = good + 3 * page, *const end = good + 5 * page;

  Ranges() {
    std::fill(good, end, uint8_t{0x5A});
    Protect(read_only, 1, Protection::kReadOnly);
  }
  bool Unchanged() const { return std::count(good, end, 0x5A) == end - good; }
  // None is empty, null or wraps at the end of the address space.
  std::vector<Range> All() const {
    return {{"several mappings", good + 1, 5 * page - 1, true, false},
            {"from writable to read-only", read_only - 2, 3, true, false},
            {"up to the read-only page", good, 3 * page, true, true},
            {"a read-only byte", read_only + 9, 1, true, false},
            {"up to the guard page", end - 100, 100, true, true},
            {"one byte too many", end - 100, 101, false, false},
            {"one byte too early", good - 1, 100, false, false},
            {"an inaccessible byte", end, 1, false, false},
            {"below all mappings", Address(page), 1, false, false},
            {"an address of no canonical form", Address(uintptr_t{1} << 63), 64, false, false},
            {"an address at the very end", Address(UINTPTR_MAX - 1), 1, false, false},
            {"all that follows", good, UINTPTR_MAX - reinterpret_cast<uintptr_t>(good), false, false}};
  }
};

// Eight threads ask about a good and a bad range, two others map and unmap, and the caller's writes to the good one.
// Gives the number of wrong answers and of lost bytes.
template <typename Answers>
int ErrorsInAStorm(Answers answers_rightly) {
  GuardedBuffer buffer(3 * PageSize() + 10);
  std::atomic<int> errors{0}, asking{8};
  std::vector<std::jthread> threads;
  for (int i = 0; i < 10; ++i) {
    threads.emplace_back([&, asks = i < 8] {
      for (int round = 0; asks && round < 60; ++round) {
        errors += !answers_rightly({"good", buffer.data(), buffer.size(), true, true});
        errors += !answers_rightly({"bad", buffer.data(), buffer.size() + 1, false, false});
      }
      asking -= asks;
      while (!asks && asking > 0) UnmapPages(MapPages(3), 3);
    });
  }
  volatile uint8_t* byte = buffer.data();
  for (uint8_t value = 0; asking > 0; ++value) {
    *byte = value;
    errors += *byte != value;
  }
  threads.clear();
  return errors;
}

}  // namespace qv_test
