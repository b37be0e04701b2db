#include "qvclr/kernel.h"

#include "base/readable.h"
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

}  // namespace

Status RunKernel(const Kernel& kernel, const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst,
                 RowArgs args) {
  Frame source = in;
  if (source.space->planar) source.pad = 0;
  if (const Status status = CheckSizeRules(in, out); !Ok(status)) return status;
  if (!IsReadable(src, source.KernelBytes()) || !IsWritable(dst, out.KernelBytes())) return kInvalidParameter;

  const TargetLines output = OutputPieces(out, dst);
  SafeInput input;
  if (const Status status = input.Prepare(InputPieces(source, src), output); !Ok(status)) return status;

  const auto width = static_cast<size_t>(source.width);
  const size_t src_stride = source.space->planar ? width : input.lines().stride;
  const size_t dst_stride = out.space->planar ? width : output.stride;
  args.height = source.Rows();
  args.rgb_stride = IsRgb(*source.space) ? src_stride : dst_stride;
  if (kernel.prepare) kernel.prepare(args);
  for (args.row = 0; args.row < args.height; args.row += kernel.band_rows) {
    const Status status =
        kernel.row(input.lines().first + args.row * src_stride, dst + args.row * dst_stride, width, args);
    if (!Ok(status)) return status;
  }
  return kSuccess;
}

}  // namespace qv
