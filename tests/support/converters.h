// Settings and converters for tests of the exported functions.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

#include "Qvclr15x.h"
#include "support/bytes.h"

namespace qv_test {

inline constexpr uint32_t kSpaces[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 128};

inline ConversionParams Params(uint32_t method) {
  ConversionParams params{};
  params.uStructSize = sizeof params;
  params.nActiveMethod = params.nMethodMask = method;
  params.nEmulationTableKind = METHOD_TABLE;
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

// Of a creation, which stores a handle exactly when it succeeds; of what it stores, the release too.
inline int32_t InitStatus(uint32_t src_space, uint32_t dst_space, const ConversionParams* params) {
  ColorConverter* const untouched = reinterpret_cast<ColorConverter*>(uintptr_t{0x1234});
  ColorConverter* handle = untouched;
  const int32_t status = Q_ClrInit(&handle, src_space, dst_space, params);
  EXPECT_EQ(handle == untouched, status != SUCCESS);
  if (status == SUCCESS) EXPECT_TRUE(Q_ClrIsValid(handle) == SUCCESS && Q_ClrFree(handle) == SUCCESS);
  return status;
}
inline int32_t InitStatus(uint32_t src_space, uint32_t dst_space, const ConversionParams& params) {
  return InitStatus(src_space, dst_space, &params);
}

inline Bytes Converted(const ConverterPtr& converter, const Bytes& source, size_t pixels, size_t target_bytes,
                       uint8_t fill = 0) {
  Bytes target(target_bytes, fill);
  EXPECT_TRUE(converter);
  EXPECT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), static_cast<int32_t>(pixels), 1, 0, 0),
            SUCCESS);
  return target;
}

}  // namespace qv_test
