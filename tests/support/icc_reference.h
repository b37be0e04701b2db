// The colour engine called directly: what conversions by ICC are held against.
#pragma once

#include <gtest/gtest.h>
#include <lcms2.h>

#include <cstdint>
#include <vector>

#include "Qvclr15x.h"
#include "support/files.h"

namespace qv_test {

struct IccSide {
  uint32_t space, format;
  size_t pixel;
  const char* file;
  size_t file_size;
};
inline constexpr IccSide kRgb = {CS_RGB, 0x40019, 3, "srgb.icc", 3144};
inline constexpr IccSide kBgr = {CS_BGR, 0x40419, 3, "srgb.icc", 3144};
inline constexpr IccSide kCmyk = {CS_CMYK, 0x60021, 4, "cmyk.icc", 725436};
inline constexpr IccSide kCmy = {CS_CMY, 0x50019, 3, "cmy.icc", 102000};
inline constexpr IccSide kLab = {CS_LAB, 0xA0019, 3, "lab.icc", 200182};

inline bool IsRgb(const IccSide& side) { return side.space == CS_RGB || side.space == CS_BGR; }

inline Bytes BuiltInProfile(const IccSide& side) {
  Bytes bytes = ReadResource(side.file);
  EXPECT_EQ(bytes.size(), side.file_size) << side.file;
  return bytes;
}

inline cmsHPROFILE OpenProfile(const Bytes& profile) {
  return cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
}

// Closes it.
inline Bytes SavedProfile(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  EXPECT_TRUE(cmsSaveProfileToMem(profile, nullptr, &size));
  Bytes bytes(size);
  EXPECT_TRUE(cmsSaveProfileToMem(profile, bytes.data(), &size));
  cmsCloseProfile(profile);
  return bytes;
}

inline Bytes ConvertedByEngine(const IccSide& from, const Bytes& from_profile, const IccSide& to,
                               const Bytes& to_profile, const Bytes& source) {
  cmsHPROFILE in = OpenProfile(from_profile), out = OpenProfile(to_profile);
  cmsHTRANSFORM transform = cmsCreateTransform(in, from.format, out, to.format, INTENT_PERCEPTUAL, 0);
  const size_t pixels = source.size() / from.pixel;
  Bytes target(pixels * to.pixel);
  EXPECT_TRUE(transform);
  if (transform) cmsDoTransform(transform, source.data(), target.data(), static_cast<cmsUInt32Number>(pixels));
  for (cmsHPROFILE profile : {in, out}) cmsCloseProfile(profile);
  cmsDeleteTransform(transform);
  return target;
}

// A built-in profile made another: every node of its perceptual tables is scaled by `factor`.
inline Bytes AlteredProfile(const IccSide& side, double factor, double version = 2.4) {
  cmsHPROFILE profile = OpenProfile(BuiltInProfile(side));
  const auto scale = [](const cmsUInt16Number*, cmsUInt16Number* out, void* by) -> cmsInt32Number {
    for (int i = 0; i < 3; ++i) out[i] = static_cast<cmsUInt16Number>(out[i] * *static_cast<double*>(by));
    return TRUE;
  };
  for (const cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigBToA0Tag}) {
    auto* stage = cmsPipelineGetPtrToFirstStage(static_cast<cmsPipeline*>(cmsReadTag(profile, tag)));
    while (stage && cmsStageType(stage) != cmsSigCLutElemType) stage = cmsStageNext(stage);
    EXPECT_TRUE(stage && cmsStageSampleCLut16bit(stage, scale, &factor, 0)) << side.file;
  }
  cmsSetProfileVersion(profile, version);
  return SavedProfile(profile);
}

}  // namespace qv_test
