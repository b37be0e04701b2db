// The settings of CS_YUV in the form that its kernels use.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "Qvclr15x.h"

namespace qv {

struct YuvSettings {
  double u_span = 223, v_span = 275;
  int64_t u_offset = 112, v_offset = 138;
  int64_t luma_span = 255;
  const uint8_t* stored_luma = nullptr;        // 256 entries; null: luma is stored as it is
  std::array<uint8_t, 256> index_of_stored{};  // the smallest index whose entry is nearest
};

// Points to the record's luma table.
constexpr YuvSettings MakeYuvSettings(const Space1Params& params) {
  YuvSettings settings;
  if (params.nUSpan != 0) settings.u_span = params.nUSpan;
  if (params.nUOffset != 0) settings.u_offset = params.nUOffset;
  if (params.nVSpan != 0) settings.v_span = params.nVSpan;
  if (params.nVOffset != 0) settings.v_offset = params.nVOffset;
  if (params.nLumaSpan != 0) settings.luma_span = params.nLumaSpan;
  if (!params.pLumaTable || params.nLumaTableBytes < 256) return settings;
  settings.stored_luma = params.pLumaTable;
  for (int stored = 0; stored < 256; ++stored) {
    int nearest = 256;
    for (int index = 0; index < 256; ++index) {
      const int distance =
          params.pLumaTable[index] > stored ? params.pLumaTable[index] - stored : stored - params.pLumaTable[index];
      if (distance < nearest) {
        nearest = distance;
        settings.index_of_stored[static_cast<size_t>(stored)] = static_cast<uint8_t>(index);
      }
    }
  }
  return settings;
}

// The converter's copy: the caller's record, whose luma table it owns, and what is made of it.
struct YuvRecord {
  Space1Params params;
  uint32_t luma_bytes;  // in the table; the record's own count may be changed without it
  YuvSettings settings;

  void MakeSettings() {
    Space1Params usable = params;
    usable.nLumaTableBytes = std::min(params.nLumaTableBytes, luma_bytes);
    settings = MakeYuvSettings(usable);
  }
};

}  // namespace qv
