#include "qvclr/create.h"

#include <algorithm>

#include "base/files.h"
#include "qvclr/icc_methods.h"
#include "qvclr/library.h"
#include "qvclr/params.h"
#include "qvclr/spaces.h"
#include "qvclr/tables.h"

namespace qv {
namespace {

uint32_t RouteOf(uint32_t src_space, uint32_t dst_space) {
  return src_space == dst_space || IsRgb(src_space) || IsRgb(dst_space) ? kRouteDirect : kRouteTwoSteps;
}

Status PrepareCustomTable(const ConversionParams& params, const EmulationTable& kind, ColorConverter* converter) {
  if (!NamesExistingFile(params.sEmulationTableName)) return kProfileName;
  std::ranges::copy(params.sEmulationTableName, converter->table_name);
  auto table = NewArray<uint8_t>(kind.bytes);
  if (!table) return kNoMemory;
  const Status status = ReadTable(converter->table_name, kind.bytes, &table);
  converter->custom_table = table.release();
  return static_cast<int32_t>(status) > SUCCESS ? kFileRead : status;
}

Status PrepareMethods(const ConversionParams& params, ColorConverter* converter) {
  const uint32_t mask = converter->method_mask;
  if (converter->route == kRouteTwoSteps) {
    converter->icc_in_format = converter->src_space;
    converter->icc_out_format = converter->dst_space;
  } else {
    if (mask & METHOD_ICC) {
      if (const Status status = MakeBuiltInIcc(converter); !Ok(status)) return status;
    }
    if (mask & METHOD_CUSTOM_ICC) {
      if (const Status status = TakeProfiles(params, converter); !Ok(status)) return status;
      if (const Status status = MakeCustomIcc(converter); !Ok(status)) return status;
    }
  }
  const EmulationTable* table = TableFor(converter->src_space, converter->dst_space);
  if (table && (mask & METHOD_TABLE)) converter->built_in_table = FindBuiltInTable(*table);
  return table && (mask & METHOD_CUSTOM_TABLE) ? PrepareCustomTable(params, *table, converter) : kSuccess;
}

// `params` is the library's copy: the automatic choice is made in it.
Status Configure(uint32_t src_space, uint32_t dst_space, ConversionParams params, ColorConverter* converter) {
  if (params.nActiveMethod == METHOD_TABLE && params.nEmulationTableKind != METHOD_TABLE) return kInvalidParameter;
  Owned<WhitePointParams> white_point;
  if (const Status status = CopyWhitePoint(params.pWhitePoint, &white_point); !Ok(status)) return status;
  converter->white_point = white_point.release();
  ChooseMethod(src_space, dst_space, &params);
  if ((params.nMethodMask & kEveryMethod) == 0) return kUnsupportedMethod;
  if ((params.nActiveMethod & params.nMethodMask) == 0) return kUnsupportedMethod;
  converter->active_method = params.nActiveMethod;
  converter->method_mask = params.nMethodMask;
  if (const Status status = PrepareMethods(params, converter); !Ok(status)) return status;
  return CopySubRecords(params, src_space, dst_space, converter);
}

Status AddSource11Tables(ColorConverter* converter) {
  auto tables = New<YCbCrTables>();
  if (!tables) return kNoMemory;
  BuildYCbCrTables(*tables);
  converter->source11_tables = tables.release();
  return kSuccess;
}

// Equal spaces need nothing: whatever their identifier, pixels are copied.
bool IsPlainCopy(uint32_t src_space, uint32_t dst_space, const ConversionParams* params) {
  return src_space == dst_space && !(params && (params->nMethodMask & METHOD_CUSTOM_ICC));
}

}  // namespace

Status CreateConverter(uint32_t src_space, uint32_t dst_space, const ConversionParams* params,
                       ColorConverter** handle) {
  const bool plain_copy = IsPlainCopy(src_space, dst_space, params);
  if (!plain_copy) {
    if (params && params->uStructSize != sizeof *params) return kInvalidStructSize;
    if (!FindSpace(src_space) || !FindSpace(dst_space)) return kUnsupportedColorSpace;
  }
  ConverterOwner converter(New<ColorConverter>().release());
  auto node = New<ConverterList::Node>();
  if (!converter || !node) return kNoMemory;
  converter->marker = kConverterMarker;
  converter->src_space = src_space;
  converter->dst_space = dst_space;
  if (!plain_copy) {
    converter->route = RouteOf(src_space, dst_space);
    converter->gamma = kGamma;
    converter->active_method = converter->method_mask = METHOD_FORMULA;
    Status status = params ? Configure(src_space, dst_space, *params, converter.get()) : kSuccess;
    if (Ok(status) && src_space == CS_CMYK_PROFILE) status = AddSource11Tables(converter.get());
    if (!Ok(status)) return status;
  }
  ColorConverter* const made = converter.get();
  AddConverter(std::move(converter), std::move(node));
  *handle = made;
  return kSuccess;
}

}  // namespace qv
