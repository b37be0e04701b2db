#include "qvclr/kernel.h"

#include <algorithm>
#include <cstring>

#include "base/sizes.h"
#include "qvclr/frame.h"

namespace qv {
namespace {

// Planar frames carry no padding between rows, and are one piece where overlaps are judged.
SourceLines InputPieces(const Frame& in, const uint8_t* src) {
  if (in.space->planar) return {src, in.KernelBytes(), in.KernelBytes(), 1};
  return LinesOf(in, src);
}
TargetLines OutputPieces(const Frame& out, uint8_t* dst) {
  if (out.space->planar) return {dst, out.KernelBytes() - out.Rows() * out.Padding(), 0, 1};
  return LinesOf(out, dst);
}

template <typename Byte>
struct Rows {
  Byte* first;
  size_t stride;

  Rows From(size_t row) const { return {first + row * stride, stride}; }
};

// One row. A rest that is no whole block for vectors becomes one, aside: the pixel function that would convert it may
// take longer than all the row before it. Fewer than `kLeast` pixels are not worth that.
Status RunRow(const Kernel& kernel, const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  constexpr size_t kBlock = 64, kLeast = 4, kMostBytes = 4;
  const size_t rest = width % kBlock;
  if (rest < kLeast || kernel.band_rows > 1) return kernel.row(src, dst, width, args);
  if (width > rest) {
    if (const Status status = kernel.row(src, dst, width - rest, args); !Ok(status)) return status;
  }
  const auto bytes = [&](size_t pixels, size_t unit_bytes) { return pixels / kernel.unit_pixels * unit_bytes; };
  src += bytes(width - rest, kernel.src_bytes);
  dst += bytes(width - rest, kernel.dst_bytes);
  uint8_t block[kBlock * kMostBytes] = {}, converted[kBlock * kMostBytes];
  std::memcpy(block, src, bytes(rest, kernel.src_bytes));
  if (!Ok(kernel.row(block, converted, kBlock, args)))
    return kernel.row(src, dst, rest, args);  // up to what it refuses
  std::memcpy(dst, converted, bytes(rest, kernel.dst_bytes));
  return kSuccess;
}

// `width` pixels of each of `count` rows. Rows without anything between them are one long row.
Status RunRows(const Kernel& kernel, Rows<const uint8_t> from, Rows<uint8_t> to, size_t count, size_t width,
               RowArgs args) {
  const size_t units = width / kernel.unit_pixels;
  const bool packed = from.stride == units * kernel.src_bytes && to.stride == units * kernel.dst_bytes;
  if (packed && kernel.band_rows == 1) return RunRow(kernel, from.first, to.first, width * count, args);
  for (size_t row = 0; row < count; row += kernel.band_rows, args.row += kernel.band_rows) {
    if (const Status s = RunRow(kernel, from.From(row).first, to.From(row).first, width, args); !Ok(s)) return s;
  }
  return kSuccess;
}

// Both sides as a kernel walks them. Output that would overwrite unread input makes it walk a copy.
class Sides {
 public:
  Rows<const uint8_t> from{};
  Rows<uint8_t> to{};

  Status Prepare(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst) {
    const TargetLines output = OutputPieces(out, dst);
    if (const Status status = input_.Prepare(InputPieces(in, src), output); !Ok(status)) return status;
    const auto width = static_cast<size_t>(in.width);
    from = {input_.lines().first, in.space->planar ? width : input_.lines().stride};
    to = {dst, out.space->planar ? width : output.stride};
    return kSuccess;
  }

 private:
  SafeInput input_;
};

Frame WithoutPlanarPadding(Frame frame) {
  if (frame.space->planar) frame.pad = 0;
  return frame;
}

}  // namespace

Status RunKernel(const Kernel& kernel, const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst,
                 RowArgs args) {
  const Frame source = WithoutPlanarPadding(in);
  if (const Status status = CheckSizeRules(in, out); !Ok(status)) return status;
  if (!AreAccessible(source, src, out, dst, &Frame::KernelBytes)) return kInvalidParameter;
  Sides sides;
  if (const Status status = sides.Prepare(source, src, out, dst); !Ok(status)) return status;
  args.height = source.Rows();
  args.rgb_stride = IsRgb(*source.space) ? sides.from.stride : sides.to.stride;
  if (kernel.prepare) kernel.prepare(args);
  return RunRows(kernel, sides.from, sides.to, args.height, static_cast<size_t>(source.width), args);
}

Status RunKernelPair(const Kernel& to_rgb, const Kernel& from_rgb, const Frame& in, const uint8_t* src,
                     const Frame& out, uint8_t* dst) {
  constexpr size_t kStripBytes = size_t{32} << 10;
  const auto width = static_cast<size_t>(in.width);
  const size_t height = in.Rows(), rgb_bytes = 3 * width, bands = std::max(to_rgb.band_rows, from_rgb.band_rows);
  const size_t strip_rows = std::min(std::max(kStripBytes / rgb_bytes / bands, size_t{1}) * bands, height);
  const auto strip = NewArray<uint8_t>(Product(strip_rows, rgb_bytes));
  if (!strip) return kNoMemory;
  Sides sides;
  if (const Status status = sides.Prepare(WithoutPlanarPadding(in), src, out, dst); !Ok(status)) return status;
  for (size_t row = 0; to_rgb.check && row < height; ++row) {
    if (const Status s = to_rgb.check(sides.from.From(row).first, nullptr, width, {}); !Ok(s)) return s;
  }

  RowArgs in_args{.height = height, .rgb_stride = rgb_bytes}, out_args = in_args;
  if (to_rgb.prepare) to_rgb.prepare(in_args);
  if (from_rgb.prepare) from_rgb.prepare(out_args);
  for (size_t row = 0; row < height; row += strip_rows) {
    const size_t count = std::min(strip_rows, height - row);
    in_args.row = out_args.row = row;
    Status status = RunRows(to_rgb, sides.from.From(row), {strip.get(), rgb_bytes}, count, width, in_args);
    if (Ok(status)) status = RunRows(from_rgb, {strip.get(), rgb_bytes}, sides.to.From(row), count, width, out_args);
    if (!Ok(status)) return status;
  }
  return kSuccess;
}

}  // namespace qv
