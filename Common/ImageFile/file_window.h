// A look ahead into an open file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/files.h"
#include "base/memory.h"

namespace qv {

class FileWindow {
 public:
  // The window holds `capacity` bytes at most.
  FileWindow(File& file, size_t capacity) : file_(file), buffer_(NewArray<uint8_t>(capacity)), capacity_(capacity) {}

  bool HasMemory() const { return buffer_ != nullptr; }
  // True when so many bytes lie ahead, which then can be seen; false at the end of the file or when it cannot be read.
  bool See(size_t bytes);
  std::span<const uint8_t> Ahead() const { return {buffer_.get() + at_, filled_ - at_}; }
  void Skip(size_t bytes) { at_ += bytes; }  // of those that are seen

 private:
  File& file_;
  Owned<uint8_t[]> buffer_;
  size_t capacity_, at_ = 0, filled_ = 0;
};

}  // namespace qv
