#include "qvclr/frame.h"

#include <cstring>

#include "base/readable.h"
#include "base/sizes.h"

namespace qv {

size_t Frame::LineBytes() const { return (static_cast<size_t>(width) * space->bits + 7) / 8; }

size_t Frame::BytesToLastPixel() const { return Sum(Product(LineBytes(), Rows()), Product(Padding(), Rows() - 1)); }

size_t Frame::BytesWithPadding() const { return Product(LineBytes() + Padding(), Rows()); }

size_t Frame::KernelBytes() const {
  const size_t bits = Product(Product(static_cast<size_t>(width), Rows()), space->bits);
  return bits == SIZE_MAX ? SIZE_MAX : Sum(bits / 8 + (bits % 8 != 0), Product(Padding(), Rows()));
}

bool AreAccessible(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst, size_t (Frame::*rule)() const) {
  const size_t in_bytes = (in.*rule)(), out_bytes = (out.*rule)();
  const bool in_tested = in_bytes <= in.tested, out_tested = out_bytes <= out.tested;
  return (in_tested && out_tested) ||
         IsReadableAndWritable(src, in_tested ? 0 : in_bytes, dst, out_tested ? 0 : out_bytes);
}

Status CheckSizeRules(const Frame& in, const Frame& out) {
  const Status status = CheckSize(*in.space, in.width, in.height);
  return Ok(status) ? CheckSize(*out.space, out.width, out.height) : status;
}

namespace {

template <typename Byte>
Lines<Byte> MakeLines(const Frame& frame, Byte* first) {
  return {first, frame.LineBytes(), frame.LineBytes() + frame.Padding(), frame.Rows()};
}

}  // namespace

SourceLines LinesOf(const Frame& frame, const uint8_t* first) { return MakeLines(frame, first); }
TargetLines LinesOf(const Frame& frame, uint8_t* first) { return MakeLines(frame, first); }

bool OverwritesUnreadInput(const SourceLines& from, const TargetLines& to) {
  const auto source = reinterpret_cast<uintptr_t>(from.first);
  const auto target = reinterpret_cast<uintptr_t>(to.first);
  if (source >= target + to.Extent() || target >= source + from.Extent()) return false;
  if (source == target && from.bytes == to.bytes && from.stride == to.stride) return false;  // each byte over itself
  // Lines that overlap themselves, or a planar frame (one piece) against lines: not worth a closer look.
  if (from.count != to.count || from.stride < from.bytes || to.stride < to.bytes) return true;
  // Safe while no output line starts or ends behind its input line. Both distances change evenly from line to line, so
  // that the first and the last line tell.
  for (const size_t y : {size_t{0}, from.count - 1}) {
    const uintptr_t input = source + y * from.stride, output = target + y * to.stride;
    if (output > input || output + to.bytes > input + from.bytes) return true;
  }
  return false;
}

Status SafeInput::Prepare(const SourceLines& from, const TargetLines& to) {
  lines_ = from;
  if (!OverwritesUnreadInput(from, to)) return kSuccess;
  copy_ = NewArray<uint8_t>(Product(from.bytes, from.count));
  if (!copy_) return kNoMemory;
  for (size_t y = 0; y < from.count; ++y) std::memcpy(&copy_[y * from.bytes], from.Line(y), from.bytes);
  lines_ = {copy_.get(), from.bytes, from.bytes, from.count};
  return kSuccess;
}

Status CopyLines(const SourceLines& from, const TargetLines& to) {
  SafeInput input;
  if (const Status status = input.Prepare(from, to); !Ok(status)) return status;
  for (size_t y = 0; y < to.count; ++y) std::memmove(to.Line(y), input.lines().Line(y), to.bytes);
  return kSuccess;
}

}  // namespace qv
