#include "qvclr/route.h"

#include <cstring>

#include "base/readable.h"
#include "qvclr/icc_transform.h"
#include "qvclr/kernel.h"

namespace qv {
namespace {

// Equal spaces by handle. Without paddings worth the name, one block; else each line starts only its padding behind the
// one before: fixed behaviour, which callers see.
Status CopyByConverter(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst) {
  const size_t line = in.LineBytes(), rows = in.Rows();
  if (in.Padding() < 2 && out.Padding() < 2) {
    std::memmove(dst, src, line * rows);
    return kSuccess;
  }
  return CopyLines({src, line, in.Padding(), rows}, {dst, line, out.Padding(), rows});
}

Status ConvertByIcc(const IccTransform* transform, const Frame& in, const uint8_t* src, const Frame& out,
                    uint8_t* dst) {
  if (!transform) return kUnsupportedMethod;
  if (in.space->id == CS_CMYK_PROFILE || out.space->id == CS_CMYK_PROFILE) return kUnsupportedColorSpace;
  const TargetLines target = LinesOf(out, dst);
  SafeInput input;
  if (const Status status = input.Prepare(LinesOf(in, src), target); !Ok(status)) return status;
  for (size_t y = 0; y < target.count; ++y) {
    transform->Run(input.lines().Line(y), target.Line(y), static_cast<size_t>(in.width));
  }
  return kSuccess;
}

// One kernel; one of the sides is RGB or BGR.
Status ConvertByKernel(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst, RowArgs args) {
  const bool to_rgb = IsRgb(*out.space);
  const Kernel* kernel = to_rgb ? in.space->to_rgb : out.space->from_rgb;
  args.rgb_first = (to_rgb ? out : in).space->id == CS_RGB;
  return RunKernel(*kernel, in, src, out, dst, args);
}

// Neither side is RGB: the two kernels meet in a packed R, G, B frame.
Status ConvertThroughRgb(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst) {
  const Frame between{FindSpace(CS_RGB), in.width, in.height, 0};
  const auto rgb = NewArray<uint8_t>(between.BytesToLastPixel());
  if (!rgb) return kNoMemory;
  if (const Status status = ConvertByKernel(in, src, between, rgb.get(), {}); !Ok(status)) return status;
  return ConvertByKernel(between, rgb.get(), out, dst, {});
}

// The settings of the converter's own; the side that is not RGB tells which.
RowArgs ArgsOf(const ColorConverter& converter) {
  RowArgs args;
  if (converter.cmyk_params) args.black_param = converter.cmyk_params->nBlackParam;
  if (converter.yuv) args.record = &converter.yuv->settings;
  if (converter.lab_to_rgb && converter.src_space == CS_LAB) args.record = converter.lab_to_rgb;
  if (converter.rgb_to_lab && converter.dst_space == CS_LAB) args.record = converter.rgb_to_lab;
  if (converter.source11_tables) args.record = converter.source11_tables;
  return args;
}

}  // namespace

Status ConvertDirect(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst) {
  if (const Status status = CheckSizeRules(in, out); !Ok(status)) return status;
  if (!IsReadable(src, in.BytesWithPadding()) || !IsWritable(dst, out.BytesWithPadding())) return kBadPointer;
  if (in.space == out.space) {
    if (src == dst && in.Padding() == out.Padding()) return kInPlacePadding;
    return CopyLines(LinesOf(in, src), LinesOf(out, dst));
  }
  if (IsRgb(*in.space) || IsRgb(*out.space)) return ConvertByKernel(in, src, out, dst, {});
  return ConvertThroughRgb(in, src, out, dst);
}

Status ConvertByConverter(const ColorConverter& converter, const Frame& in, const uint8_t* src, const Frame& out,
                          uint8_t* dst) {
  if (in.space == out.space && converter.active_method != METHOD_CUSTOM_ICC) return CopyByConverter(in, src, out, dst);
  if (converter.route == kRouteTwoSteps) {
    static_cast<void>(ConvertDirect(in, src, out, dst));  // its result is not told: intended
    return kSuccess;
  }
  switch (converter.active_method) {
    case METHOD_FORMULA: return ConvertByKernel(in, src, out, dst, ArgsOf(converter));
    case METHOD_ICC: return ConvertByIcc(converter.built_in_icc, in, src, out, dst);
    case METHOD_CUSTOM_ICC: return ConvertByIcc(converter.custom_icc, in, src, out, dst);
    default: return kUnsupportedMethod;
  }
}

}  // namespace qv
