// Buffers seen as lines: the sizes that the interface names, and the two ways in which lines are walked.
#pragma once

#include <cstdint>

#include "base/memory.h"
#include "base/status.h"
#include "qvclr/spaces.h"

namespace qv {

// `width` and `height` are above 0; a padding below 0 counts as 0.
struct Frame {
  const Space* space;
  int32_t width, height, pad;
  size_t tested = 0;  // bytes that were found readable or writable

  size_t Padding() const { return pad > 0 ? static_cast<size_t>(pad) : 0; }
  size_t Rows() const { return static_cast<size_t>(height); }
  size_t LineBytes() const;         // of one line, without padding
  size_t BytesToLastPixel() const;  // the last line without padding
  size_t BytesWithPadding() const;  // every line with padding
  size_t KernelBytes() const;       // what a kernel tests: whole-frame pixels, then every line's padding
};

// Tests what was not tested yet of the bytes that `rule` counts.
bool AreAccessible(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst, size_t (Frame::*rule)() const);

// The size rules of both sides, the source's first.
Status CheckSizeRules(const Frame& in, const Frame& out);

// `count` lines of `bytes` bytes each, `stride` bytes apart. A stride below `bytes` is possible: such lines overlap.
template <typename Byte>
struct Lines {
  Byte* first;
  size_t bytes, stride, count;

  Byte* Line(size_t y) const { return first + y * stride; }
  size_t Extent() const { return (count - 1) * stride + bytes; }
};
using SourceLines = Lines<const uint8_t>;
using TargetLines = Lines<uint8_t>;

SourceLines LinesOf(const Frame& frame, const uint8_t* first);
TargetLines LinesOf(const Frame& frame, uint8_t* first);

// True when writing the lines of `to` one after the other, each from the line of `from` of the same number, would
// overwrite input before it is read. Equal lines at the same place never do.
bool OverwritesUnreadInput(const SourceLines& from, const TargetLines& to);

// The input as it can be read while the output is written: the caller's own bytes, or a packed copy of them.
class SafeInput {
 public:
  Status Prepare(const SourceLines& from, const TargetLines& to);
  const SourceLines& lines() const { return lines_; }

 private:
  SourceLines lines_{};
  Owned<uint8_t[]> copy_;
};

// Copies line by line.
Status CopyLines(const SourceLines& from, const TargetLines& to);

}  // namespace qv
