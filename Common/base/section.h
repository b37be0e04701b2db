// A recursive critical section. It must be opened before its first use and can be closed and opened again.
#pragma once

#include <cstddef>

namespace qv {

class Section {
 public:
  void Open();
  void Close();
  void Enter();
  void Leave();

 private:
  alignas(std::max_align_t) std::byte storage_[64]{};  // the system's own object
};

class SectionGuard {
 public:
  explicit SectionGuard(Section& section) : section_(section) { section_.Enter(); }
  ~SectionGuard() { section_.Leave(); }
  SectionGuard(const SectionGuard&) = delete;
  SectionGuard& operator=(const SectionGuard&) = delete;

 private:
  Section& section_;
};

}  // namespace qv
