#include "qvclr/route.h"

#include <cstring>

#include "base/sizes.h"
#include "qvclr/icc_transform.h"
#include "qvclr/kernel.h"
#include "qvclr/params.h"
#include "qvclr/tables.h"

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

// One kernel; one of the sides is RGB or BGR.
Status ConvertByKernel(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst, RowArgs args) {
  const bool to_rgb = IsRgb(*out.space);
  const Kernel* kernel = to_rgb ? in.space->to_rgb : out.space->from_rgb;
  args.rgb_first = (to_rgb ? out : in).space->id == CS_RGB;
  return RunKernel(*kernel, in, src, out, dst, args);
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

// A line of CS_CMYK_PROFILE passes through one of CMYK on its side of the engine.
Status ConvertByIcc(const ColorConverter& converter, const IccTransform* transform, const Frame& in, const uint8_t* src,
                    const Frame& out, uint8_t* dst) {
  if (!transform) return kUnsupportedMethod;
  const bool decodes = in.space->id == CS_CMYK_PROFILE, encodes = out.space->id == CS_CMYK_PROFILE;
  const YCbCrTables& tables = converter.source11_tables ? *converter.source11_tables : SharedYCbCrTables();
  const auto width = static_cast<size_t>(in.width);
  Owned<uint8_t[]> cmyk;
  if (decodes || encodes) cmyk = NewArray<uint8_t>(Product(4, width));
  if ((decodes || encodes) && !cmyk) return kNoMemory;
  const TargetLines target = LinesOf(out, dst);
  SafeInput input;
  if (const Status status = input.Prepare(LinesOf(in, src), target); !Ok(status)) return status;
  for (size_t y = 0; y < target.count; ++y) {
    const uint8_t* from = input.lines().Line(y);
    uint8_t* to = target.Line(y);
    if (decodes) CmykFromProfilePixels(from, cmyk.get(), width, tables);
    transform->Run(decodes ? cmyk.get() : from, encodes ? cmyk.get() : to, width);
    if (encodes) ProfilePixelsFromCmyk(cmyk.get(), to, width, tables);
  }
  return kSuccess;
}

Status ConvertByTable(const ColorConverter& converter, const uint8_t* table, const Frame& in, const uint8_t* src,
                      const Frame& out, uint8_t* dst) {
  if (const EmulationTable* kind = TableFor(in.space->id, out.space->id)) {
    if (!table) return kUnsupportedMethod;
    RowArgs args;
    args.table = table;
    args.rgb_first = in.space->id == CS_RGB || out.space->id == CS_RGB;
    return RunKernel(*kind->kernel, in, src, out, dst, args);
  }
  const bool by_formula = IsRgb(*in.space) && out.space->id == CS_CMYK;
  return by_formula ? ConvertByKernel(in, src, out, dst, ArgsOf(converter)) : kSuccess;  // else nothing: intended
}

// The methods that CS_CMYK_PROFILE does not know do nothing, each with a result of its own: intended.
Status ConvertByActiveMethod(const ColorConverter& converter, const Frame& in, const uint8_t* src, const Frame& out,
                             uint8_t* dst) {
  switch (converter.active_method) {
    case METHOD_FORMULA: return ConvertByKernel(in, src, out, dst, ArgsOf(converter));
    case METHOD_ICC: return ConvertByIcc(converter, converter.built_in_icc, in, src, out, dst);
    case METHOD_CUSTOM_ICC:
      if (EitherIs(CS_CMYK_PROFILE, in.space->id, out.space->id)) return kNothingDone;
      return ConvertByIcc(converter, converter.custom_icc, in, src, out, dst);
    case METHOD_TABLE: return ConvertByTable(converter, converter.built_in_table, in, src, out, dst);
    case METHOD_CUSTOM_TABLE: return ConvertByTable(converter, converter.custom_table, in, src, out, dst);
    default: return kUnsupportedMethod;
  }
}

}  // namespace

Status ConvertDirect(const Frame& in, const uint8_t* src, const Frame& out, uint8_t* dst) {
  if (const Status status = CheckSizeRules(in, out); !Ok(status)) return status;
  if (!AreAccessible(in, src, out, dst, &Frame::BytesWithPadding)) return kBadPointer;
  if (in.space == out.space) {
    if (src == dst && in.Padding() == out.Padding()) return kInPlacePadding;
    return CopyLines(LinesOf(in, src), LinesOf(out, dst));
  }
  if (!IsRgb(*in.space) && !IsRgb(*out.space)) {
    return RunKernelPair(*in.space->to_rgb, *out.space->from_rgb, in, src, out, dst);
  }
  Frame tested_in = in, tested_out = out;
  tested_in.tested = in.BytesWithPadding();
  tested_out.tested = out.BytesWithPadding();
  return ConvertByKernel(tested_in, src, tested_out, dst, {});
}

Status ConvertByConverter(const ColorConverter& converter, const Frame& in, const uint8_t* src, const Frame& out,
                          uint8_t* dst) {
  if (in.space == out.space && converter.active_method != METHOD_CUSTOM_ICC) return CopyByConverter(in, src, out, dst);
  if (converter.route == kRouteTwoSteps) {
    static_cast<void>(ConvertDirect(in, src, out, dst));  // its result is not told: intended
    return kSuccess;
  }
  return ConvertByActiveMethod(converter, in, src, out, dst);
}

}  // namespace qv
