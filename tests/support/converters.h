// Settings and converters for tests of the exported functions.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Qvclr15x.h"

namespace qv_test {

inline ConversionParams Params(uint32_t method) {
  ConversionParams params{};
  params.uStructSize = sizeof params;
  params.nActiveMethod = params.nMethodMask = method;
  return params;
}

struct FreeConverter {
  void operator()(ColorConverter* converter) const { Q_ClrFree(converter); }
};
using ConverterPtr = std::unique_ptr<ColorConverter, FreeConverter>;

// Null when it cannot be made.
inline ConverterPtr MakeConverter(uint32_t src_space, uint32_t dst_space, const ConversionParams* params = nullptr) {
  ColorConverter* handle = nullptr;
  return ConverterPtr(Q_ClrInit(&handle, src_space, dst_space, params) == SUCCESS ? handle : nullptr);
}
inline ConverterPtr MakeConverter(uint32_t src_space, uint32_t dst_space, const ConversionParams& params) {
  return MakeConverter(src_space, dst_space, &params);
}

// The same bytes on every system.
inline std::vector<uint8_t> RandomBytes(size_t count, uint64_t seed = 1) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& byte : bytes) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    byte = static_cast<uint8_t>(seed >> 56);
  }
  return bytes;
}

}  // namespace qv_test
