// The object behind a handle, and the lists that converters stand on.
#pragma once

#include <cstddef>

#include "base/memory.h"
#include "base/status.h"
#include "qvclr/lab_records.h"
#include "qvclr/ycbcr_tables.h"
#include "qvclr/yuv_settings.h"

namespace qv {
class IccTransform;
}

// The layout is part of the interface. Owned pointers are null where the converter holds nothing of the kind.
struct ColorConverter {
  uint32_t marker;  // kConverterMarker
  uint32_t src_space, dst_space;
  qv::IccTransform* built_in_icc;          // METHOD_ICC
  qv::IccTransform* custom_icc;            // METHOD_CUSTOM_ICC
  uint32_t icc_in_format, icc_out_format;  // of the engine; on route 2, the two spaces
  CmykParams* cmyk_params;
  qv::YuvRecord* yuv;
  uint32_t route;
  WhitePointParams* white_point;
  uint32_t active_method, method_mask;
  QWChar src_profile_name[260];
  QWChar dst_profile_name[260];
  QWChar table_name[260];
  IccMemoryProfile* src_profile_memory;  // owned copies, with the bytes that they point to
  IccMemoryProfile* dst_profile_memory;
  const uint8_t* built_in_table;  // in the resource, never released
  uint8_t* custom_table;
  uint32_t gamma;  // times 100
  qv::LabToRgbRecord* lab_to_rgb;
  qv::RgbToLabRecord* rgb_to_lab;
  qv::YCbCrTables* source11_tables;
  uint8_t reserved[8];
};

namespace qv {

inline constexpr uint32_t kConverterMarker = 1712;
inline constexpr uint32_t kRouteDirect = 1;    // equal spaces, or one side is RGB or BGR
inline constexpr uint32_t kRouteTwoSteps = 2;  // through RGB
inline constexpr uint32_t kGamma = 45;

static_assert(sizeof(ColorConverter) == kConverterMarker);
static_assert(offsetof(ColorConverter, built_in_icc) == 16 && offsetof(ColorConverter, cmyk_params) == 40);
static_assert(offsetof(ColorConverter, white_point) == 64 && offsetof(ColorConverter, src_profile_name) == 80);
static_assert(offsetof(ColorConverter, src_profile_memory) == 1640 && offsetof(ColorConverter, reserved) == 1704);

static_assert(sizeof(ConversionParams) == 1648 && offsetof(ConversionParams, nMethodMask) == 1640);
static_assert(offsetof(ConversionParams, pSourceProfileMemory) == 544);
static_assert(offsetof(ConversionParams, sEmulationTableName) == 1088);
static_assert(sizeof(ConversionParamsA) == 880 && offsetof(ConversionParamsA, nMethodMask) == 872);
static_assert(sizeof(WhitePointParams) == 20 && sizeof(CmykParams) == 12 && sizeof(Space1Params) == 44);
static_assert(sizeof(LabParams) == 32 && sizeof(IccMemoryProfile) == 16);

class ConverterList {
 public:
  struct Node {
    Node *next, *previous;
    ColorConverter* converter;
  };
  static_assert(sizeof(Node) == 24);

  void Append(Node* node);
  void Unlink(Node* node);
  Node* Find(const ColorConverter* converter) const;
  Node* First() const { return head_; }

 private:
  Node* head_ = nullptr;
  Node* tail_ = nullptr;
};

// Release a field with the bytes that it points to, and empty it.
void DropMemoryProfile(IccMemoryProfile*& profile);
void DropYuvRecord(YuvRecord*& record);

// Releases what the converter owns, then the converter; the record may be partly filled.
struct ConverterReleaser {
  void operator()(ColorConverter* converter) const;
};
using ConverterOwner = std::unique_ptr<ColorConverter, ConverterReleaser>;

// Releases what a client's release of the converter covers: the two transforms by their bits in the method mask, and
// the custom table by its bit when the built-in table field is set too (intended). False when something stays behind.
bool ReleaseByMask(ColorConverter* converter);

}  // namespace qv
