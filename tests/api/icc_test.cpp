// Method 2: the built-in profiles through the colour engine, held against the engine called directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "support/converters.h"
#include "support/guarded.h"
#include "support/icc_reference.h"

namespace {

using namespace qv_test;

// By the built-in profiles.
Bytes Reference(const IccSide& from, const IccSide& to, const Bytes& source) {
  return ConvertedByEngine(from, BuiltInProfile(from), to, BuiltInProfile(to), source);
}

const std::pair<IccSide, IccSide> kPairs[] = {{kRgb, kCmyk}, {kBgr, kCmyk}, {kCmyk, kRgb}, {kCmyk, kBgr}, {kRgb, kCmy},
                                              {kBgr, kCmy},  {kCmy, kRgb},  {kCmy, kBgr},  {kRgb, kLab},  {kBgr, kLab},
                                              {kLab, kRgb},  {kLab, kBgr},  {kRgb, kBgr},  {kBgr, kRgb}};

TEST(BuiltInProfiles, EqualTheEngineCalledDirectly) {
  constexpr int32_t kWidth = 251, kHeight = 64, kPadIn = 5, kPadOut = 2;
  for (const auto& [from, to] : kPairs) {
    SCOPED_TRACE(std::to_string(from.space) + " to " + std::to_string(to.space));
    const ConverterPtr converter = MakeConverter(from.space, to.space, Params(METHOD_ICC));
    ASSERT_TRUE(converter);
    Bytes source = RandomBytes(size_t{kWidth} * kHeight * from.pixel);
    for (size_t i = 0; i < 16 * from.pixel; ++i) source[i] = (i / from.pixel) >> (i % from.pixel) & 1 ? 255 : 0;
    const Bytes expected = Reference(from, to, source);
    Bytes target(expected.size());
    ASSERT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), kWidth, kHeight, 0, 0), SUCCESS);
    EXPECT_EQ(target, expected);

    // Padded lines that end at an inaccessible page give the same pixels and keep what stands between them.
    const size_t in_line = kWidth * from.pixel, out_line = kWidth * to.pixel;
    GuardedBuffer in(kHeight * (in_line + kPadIn) - kPadIn), out(kHeight * (out_line + kPadOut) - kPadOut);
    std::memset(out.data(), 0xEE, out.size());
    for (size_t y = 0; y < kHeight; ++y) std::memcpy(in.data() + y * (in_line + kPadIn), &source[y * in_line], in_line);
    ASSERT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), kWidth, kHeight, kPadIn, kPadOut), SUCCESS);
    for (size_t y = 0; y < kHeight; ++y) {
      const uint8_t* line = out.data() + y * (out_line + kPadOut);
      ASSERT_EQ(std::memcmp(line, &expected[y * out_line], out_line), 0) << "line " << y;
      ASSERT_TRUE(y + 1 == kHeight || (line[out_line] == 0xEE && line[out_line + 1] == 0xEE)) << "padding " << y;
    }
    ASSERT_EQ(Q_ClrConvert(converter.get(), in.data() + 1, out.data(), kWidth, kHeight, kPadIn, kPadOut),
              ERR_BAD_POINTER);

    // In place, and onto the input's second line: as if out of place.
    for (const size_t shift : {size_t{0}, in_line}) {
      if (shift == 0 && from.pixel != to.pixel) continue;
      Bytes buffer(shift + std::max(source.size(), expected.size()));
      std::memcpy(buffer.data(), source.data(), source.size());
      ASSERT_EQ(Q_ClrConvert(converter.get(), buffer.data(), buffer.data() + shift, kWidth, kHeight, 0, 0), SUCCESS);
      EXPECT_EQ(std::memcmp(buffer.data() + shift, expected.data(), expected.size()), 0) << "shift " << shift;
    }
  }
}

TEST(BuiltInProfiles, ServeOnlyTheirSpaces) {
  ColorConverter* handle = nullptr;
  const ConversionParams params = Params(METHOD_ICC);
  for (const uint32_t id : {1u, 3u, 4u, 5u, 8u, 9u, 10u, 13u, 14u, 15u, 128u}) {
    EXPECT_EQ(Q_ClrInit(&handle, CS_RGB, id, &params), ERR_UNSUPPORTED_COLORSPACE) << id;
    EXPECT_EQ(Q_ClrInit(&handle, id, CS_BGR, &params), ERR_UNSUPPORTED_COLORSPACE) << id;
  }
  for (const uint32_t id : {2u, 6u, 7u, 11u, 12u}) {
    EXPECT_TRUE(MakeConverter(CS_RGB, id, params)) << id;
    EXPECT_TRUE(MakeConverter(id, CS_RGB, params)) << id;
  }
}

// The coding of CS_CMYK_PROFILE in 65536ths (JFIF), one sum per sample.
void CmykFromYccK(const uint8_t* ycck, uint8_t* cmyk) {
  const int y = ycck[0], cb = ycck[1] - 128, cr = ycck[2] - 128;
  const int paper[3] = {y + ((91881 * cr + 32768) >> 16), y + ((-22554 * cb - 46802 * cr + 32768) >> 16),
                        y + ((116130 * cb + 32768) >> 16)};
  for (int i = 0; i < 3; ++i) cmyk[i] = static_cast<uint8_t>(255 - std::clamp(paper[i], 0, 255));
  cmyk[3] = ycck[3];
}
void YccKFromCmyk(const uint8_t* cmyk, uint8_t* ycck) {
  const int r = 255 - cmyk[0], g = 255 - cmyk[1], b = 255 - cmyk[2];
  ycck[0] = static_cast<uint8_t>((19595 * r + 38470 * g + 7471 * b + 0x8000) >> 16);
  ycck[1] = static_cast<uint8_t>((-11059 * r - 21709 * g + 32768 * b + 0x807FFF) >> 16);
  ycck[2] = static_cast<uint8_t>((32768 * r - 27439 * g - 5329 * b + 0x807FFF) >> 16);
  ycck[3] = cmyk[3];
}
Bytes EachPixel(void (*convert)(const uint8_t*, uint8_t*), const Bytes& from) {
  Bytes to(from.size());
  for (size_t i = 0; i < from.size(); i += 4) convert(&from[i], &to[i]);
  return to;
}

TEST(BuiltInProfiles, CarryCmykProfileAsCmyk) {
  constexpr size_t kWidth = 37, kHeight = 40, kPadding = 3;
  for (const IccSide& rgb : {kRgb, kBgr}) {
    for (const bool decodes : {true, false}) {
      SCOPED_TRACE(testing::Message() << (decodes ? "from" : "to") << " CS_CMYK_PROFILE, other side " << rgb.space);
      const size_t in_line = kWidth * (decodes ? 4 : 3), out_line = kWidth * (decodes ? 3 : 4);
      const Bytes source = RandomBytes(in_line * kHeight);
      const Bytes expected = decodes ? Reference(kCmyk, rgb, EachPixel(CmykFromYccK, source))
                                     : EachPixel(YccKFromCmyk, Reference(rgb, kCmyk, source));
      const ConverterPtr converter = decodes ? MakeConverter(CS_CMYK_PROFILE, rgb.space, Params(METHOD_ICC))
                                             : MakeConverter(rgb.space, CS_CMYK_PROFILE, Params(METHOD_ICC));
      ASSERT_TRUE(converter);
      for (const size_t padding : {size_t{0}, kPadding}) {
        const size_t in_stride = in_line + padding, out_stride = out_line + padding;
        Bytes in(in_stride * kHeight), wanted(out_stride * kHeight, 0xEE), in_place(std::max(in.size(), wanted.size()));
        for (size_t y = 0; y < kHeight; ++y) {
          std::copy_n(&source[y * in_line], in_line, &in[y * in_stride]);
          std::copy_n(&expected[y * out_line], out_line, &wanted[y * out_stride]);
        }
        Bytes out(wanted.size(), 0xEE);
        const auto convert = [&](const Bytes& from, Bytes& to) {
          return Q_ClrConvert(converter.get(), from.data(), to.data(), kWidth, kHeight, static_cast<int32_t>(padding),
                              static_cast<int32_t>(padding));
        };
        EXPECT_EQ(convert(in, out), SUCCESS);
        EXPECT_EQ(out, wanted) << "padding " << padding;
        std::ranges::copy(in, in_place.begin());
        EXPECT_EQ(convert(in_place, in_place), SUCCESS);
        for (size_t y = 0; y < kHeight; ++y) {
          ASSERT_EQ(std::memcmp(&in_place[y * out_stride], &expected[y * out_line], out_line), 0) << "in place, " << y;
        }
      }
    }
  }
}

}  // namespace
