// A new version of a file, written beside it; it takes the file's place whole or not at all.
#pragma once

#include <array>
#include <cstddef>

#include "base/files.h"

namespace qv {

class Replacement {
 public:
  Replacement() = default;
  ~Replacement();
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  // Creates an empty file, for reading and writing, in the folder of the file that `name` leads to.
  bool Open(const QWChar* name);
  File& file() { return file_; }
  // Brings the bytes to the disk and puts the new file in the old one's place, with its access rights.
  bool Commit();

 private:
  // In the system's own units; empty where there is none.
  struct Names;
  Names& names() { return *reinterpret_cast<Names*>(names_.data()); }

  File file_;
  alignas(8) std::array<std::byte, 16384> names_{};
};

}  // namespace qv
