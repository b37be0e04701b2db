// The conversion of buffers: every check in its order, copies, paddings, overlaps and guard pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/converters.h"
#include "support/system.h"

namespace {

using namespace qv_test;

constexpr int32_t kMax = INT32_MAX;

TEST(ConvertByHandle, ChecksInTheirOrder) {
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_CMYK), copier = MakeConverter(200, 200);
  ASSERT_TRUE(converter && copier);
  GuardedBuffer in(3 * 4), out(4 * 4), small(3), record(1712);
  auto* const forged = reinterpret_cast<ColorConverter*>(record.data());
  auto* const beyond = reinterpret_cast<ColorConverter*>(record.data() + 1);
  const uint8_t* const none = nullptr;
  const struct {
    ColorConverter* handle;
    const uint8_t* src;
    uint8_t* dst;
    int32_t width, height, in_pad, out_pad, status;
  } kCases[] = {
      {nullptr, small.data(), small.data(), 4, 1, 0, 1, ERR_INV_PARAMETER},
      {forged, none, small.data(), 4, 1, 0, 1, ERR_INV_PARAMETER},
      {forged, small.data(), nullptr, 4, 1, 0, 1, ERR_INV_PARAMETER},
      {beyond, small.data(), small.data(), 0, 1, 0, 0, ERR_INV_PARAMETER},
      {beyond, small.data(), small.data(), -1, 1, 0, 0, ERR_INV_PARAMETER},
      {beyond, small.data(), small.data(), 1, 0, 0, 0, ERR_INV_PARAMETER},
      {beyond, small.data(), small.data(), 1, kMax, -1, 0, ERR_INV_PARAMETER},
      {beyond, small.data(), small.data(), 1, 1, 0, INT32_MIN, ERR_INV_PARAMETER},
      {beyond, small.data(), small.data(), 4, 1, 0, 1, ERR_BAD_POINTER},  // the handle
      {forged, in.data(), small.data(), 4, 1, 0, 1, ERR_BAD_POINTER},     // from 0 to 0: the output
      {forged, small.data(), out.data(), 4, 1, 0, 1, ERR_BAD_POINTER},    // the input
      {forged, in.data(), out.data(), 4, 1, 0, 1, ERR_INV_CONVERTER},
      {copier.get(), small.data(), small.data(), 4, 1, 0, 1, ERR_UNSUPPORTED_COLORSPACE},
      {converter.get(), in.data(), out.data(), 4, 1, 0, 0, SUCCESS},
      {converter.get(), in.data(), out.data(), kMax, kMax, kMax, kMax, ERR_BAD_POINTER},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Q_ClrConvert(c.handle, c.src, c.dst, c.width, c.height, c.in_pad, c.out_pad), c.status)
        << "case " << &c - kCases;
  }
  const uint32_t unknown[] = {1712, 77, 78};
  std::memcpy(record.data(), unknown, sizeof unknown);
  EXPECT_EQ(Q_ClrConvert(forged, small.data(), small.data(), 4, 1, 0, 1), ERR_INV_CONVERTER);
}

TEST(ConvertByHandle, InPlaceWithUnequalPaddingsIsRefused) {
  const ConverterPtr copier = MakeConverter(CS_CMYK, CS_CMYK), kernel = MakeConverter(CS_RGB, CS_BGR);
  Bytes buffer(64);
  EXPECT_EQ(Q_ClrConvert(copier.get(), buffer.data(), buffer.data(), 2, 2, 0, 4), ERR_INPLACE_PADDING);
  EXPECT_EQ(Q_ClrConvert(copier.get(), buffer.data(), buffer.data(), 2, 2, 4, 4), SUCCESS);
  EXPECT_EQ(Q_ClrConvert(kernel.get(), buffer.data(), buffer.data(), 2, 2, 0, 4), SUCCESS) << "other spaces may";
}

TEST(ConvertByHandle, EqualSpacesAreCopiedAsOneBlockOrByTheirPaddings) {
  const ConverterPtr copier = MakeConverter(CS_CMY, CS_CMY);
  const Bytes source = RandomBytes(64);
  // 2 x 3 pixels: lines of 6 bytes. A padding of 1 is ignored; with 4 and 5 each line starts 4 (5) bytes behind the
  // start of the one before.
  for (const auto& [in_pad, out_pad] : {std::pair{1, 1}, {4, 5}}) {
    Bytes target(64, 0xEE), expected = target, overlapping = source;
    for (ptrdiff_t y = 0; y < 3; ++y)
      std::copy_n(source.begin() + y * (in_pad == 1 ? 6 : in_pad), 6,
                  expected.begin() + y * (in_pad == 1 ? 6 : out_pad));
    ASSERT_EQ(Q_ClrConvert(copier.get(), source.data(), target.data(), 2, 3, in_pad, out_pad), SUCCESS);
    EXPECT_EQ(target, expected);
    ASSERT_EQ(Q_ClrConvert(copier.get(), overlapping.data(), &overlapping[3], 2, 3, in_pad, out_pad), SUCCESS);
    EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + 16, overlapping.begin() + 3));
  }
}

TEST(ConvertByHandle, PairsWithoutAnRgbSideTellNothing) {
  const ConverterPtr converter = MakeConverter(CS_CMY, CS_CMYK), odd = MakeConverter(CS_CMY, CS_YUY2);
  const GuardedBuffer in(2 * 3);
  GuardedBuffer out(Bytes(2 * 4, 7));
  // The direct conversion behind it wants the last padding too and refuses; the caller is not told.
  EXPECT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), 2, 1, 1, 0), SUCCESS);
  EXPECT_EQ(out.data()[3], 7);
  EXPECT_EQ(Q_ClrConvert(odd.get(), in.data(), out.data(), 1, 1, 0, 0), SUCCESS);
}

TEST(ConvertByHandle, KernelsWantTheLastPaddingToo) {
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_CMY);
  constexpr size_t kFrame = 2 * 6 + 3;  // 2 x 2 pixels, 3 bytes between the lines
  for (size_t in_size = kFrame - 1; in_size <= kFrame + 3; ++in_size) {
    for (size_t out_size = kFrame - 1; out_size <= kFrame + 3; ++out_size) {
      GuardedBuffer in(in_size), out(Bytes(out_size, 0x55));
      const bool below = in_size < kFrame || out_size < kFrame, whole = in_size == kFrame + 3 && out_size == kFrame + 3;
      const int32_t expected = below ? ERR_BAD_POINTER : whole ? SUCCESS : ERR_INV_PARAMETER;
      ASSERT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), 2, 2, 3, 3), expected)
          << in_size << ' ' << out_size;
      ASSERT_EQ(std::ranges::count(out.bytes(), 0x55) == static_cast<ptrdiff_t>(out_size), !whole) << "what is written";
    }
  }
}

TEST(ConvertDirect, ChecksInTheirOrder) {
  GuardedBuffer in(8 * 3), out(Bytes(8 * 4, 0x55));
  const struct {
    uint32_t from, to;
    uint8_t *src, *dst;
    int32_t width, height, in_pad, out_pad, status;
  } kCases[] = {{99, 98, nullptr, out.data(), 0, 0, 0, 0, ERR_INV_PARAMETER},
                {99, 98, in.data(), nullptr, 1, 1, 0, 0, ERR_INV_PARAMETER},
                {99, 98, in.data(), out.data(), 0, 1, 0, 0, ERR_INV_PARAMETER},
                {99, 98, in.data(), out.data(), 1, -1, 0, 0, ERR_INV_PARAMETER},
                {CS_YUY2, 98, in.data(), out.data(), kMax, 1, 0, 0, ERR_UNSUPPORTED_COLORSPACE},
                {99, CS_YUY2, in.data(), out.data(), kMax, 1, 0, 0, ERR_UNSUPPORTED_COLORSPACE},
                {CS_YUY2, CS_YVU9, in.data(), out.data(), kMax, 1, 0, 0, ERR_INV_WIDTH_ALIGNMENT},
                {CS_YVU9, CS_YUY2, in.data(), out.data(), kMax, 1, 0, 0, ERR_INV_YUV9_SIZE},
                {CS_RGB, CS_CMYK, in.data(), out.data(), 9, 1, 0, 0, ERR_BAD_POINTER},
                {CS_RGB, CS_CMYK, in.data() + 1, out.data(), 8, 1, 0, 0, ERR_BAD_POINTER},
                {CS_RGB, CS_CMYK, in.data(), out.data() + 1, 8, 1, 0, 0, ERR_BAD_POINTER},
                {CS_RGB, CS_CMYK, in.data(), out.data(), 8, 1, 1, 0, ERR_BAD_POINTER},  // the last padding
                {CS_CMY, CS_CMY, out.data(), out.data(), 11, 1, 0, 0, ERR_BAD_POINTER},
                {CS_CMY, CS_CMY, out.data(), out.data(), 8, 1, -1, 0, ERR_INPLACE_PADDING},
                {CS_CMY, CS_CMY, out.data(), out.data(), 8, 1, 0, 4, SUCCESS},
                {CS_RGB, CS_CMYK, in.data(), out.data(), 8, 1, -9, -9, SUCCESS}};  // below 0 is 0
  for (const auto& c : kCases) {
    EXPECT_EQ(Q_ClrConvertDirect(c.from, c.to, c.src, c.dst, c.width, c.height, c.in_pad, c.out_pad), c.status)
        << "case " << &c - kCases;
    if (c.status != SUCCESS) EXPECT_EQ(std::ranges::count(out.bytes(), 0x55), 32) << "case " << &c - kCases;
  }
}

TEST(ConvertDirect, EqualSpacesAreCopiedLineByLine) {
  const Bytes source = RandomBytes(3 * 10);
  for (const bool in_place : {false, true}) {
    Bytes target(40, 0xEE);
    if (in_place) std::ranges::copy(source, target.begin());
    Bytes expected(target);
    for (ptrdiff_t y = 0; y < 3; ++y) std::copy_n(source.begin() + 8 * y, 6, expected.begin() + 11 * y);
    const uint8_t* from = in_place ? target.data() : source.data();
    ASSERT_EQ(Q_ClrConvertDirect(CS_HSV, CS_HSV, from, target.data(), 2, 3, 2, 5), SUCCESS);
    EXPECT_EQ(target, expected) << "in place: " << in_place;
  }
}

// By handle over the source itself and directly, as by the two kernels one after the other, with paddings.
TEST(ConvertDirect, ChainedPairsEqualTheirTwoKernels) {
  constexpr int32_t kWidth = 1376, kHeight = 12, kPadIn = 2, kPadOut = 3;  // strips are of 4 or 7 rows
  Bytes source = RandomBytes(size_t{kWidth + 1} * kHeight * 4);
  for (uint8_t& byte : source) byte |= 1;  // no colour of CS_HLS is refused
  for (const uint32_t from : kSpaces) {
    if (from == CS_RGB || from == CS_BGR) continue;
    Bytes rgb(kWidth * kHeight * 3);
    ASSERT_EQ(Q_ClrConvertDirect(from, CS_RGB, source.data(), rgb.data(), kWidth, kHeight, kPadIn, 0), SUCCESS);
    for (const uint32_t to : kSpaces) {
      if (to == CS_RGB || to == CS_BGR || from == to) continue;
      SCOPED_TRACE(testing::Message() << from << " to " << to);
      Bytes steps(source), chained(source), by_handle(source);  // what is not written stays
      ASSERT_EQ(Q_ClrConvertDirect(CS_RGB, to, rgb.data(), steps.data(), kWidth, kHeight, 0, kPadOut), SUCCESS);
      EXPECT_EQ(Q_ClrConvertDirect(from, to, source.data(), chained.data(), kWidth, kHeight, kPadIn, kPadOut), SUCCESS);
      EXPECT_EQ(chained, steps);
      const ConverterPtr converter = MakeConverter(from, to);
      uint8_t* const buffer = by_handle.data();
      EXPECT_EQ(Q_ClrConvert(converter.get(), buffer, buffer, kWidth, kHeight, kPadIn, kPadOut), SUCCESS);
      EXPECT_EQ(by_handle, steps);
    }
  }
}

// In the last strip of the way through RGB: nothing is written.
TEST(ConvertDirect, GreyWithAHueStopsTheWholeWay) {
  Bytes large(3 * 1376 * 12, 200), chained(large.size(), 0xEE);
  large[large.size() - 1] = 0;  // in the last strip of the way through RGB
  EXPECT_EQ(Q_ClrConvertDirect(CS_HLS, CS_XYZ, large.data(), chained.data(), 1376, 12, 0, 0), ERR_ICC_TAG_NOT_FOUND);
  EXPECT_EQ(std::ranges::count(chained, 0xEE), std::ssize(chained));
}

// Lines that lie more than 2^31 bytes apart: a whole number in 32 bits would wrap on the way.
TEST(ConvertDirect, LargeFrames) {
  constexpr int32_t kPad = 1 << 30;
  constexpr size_t kStride = 3 + size_t{kPad}, kPages = 3 * kStride / 4096 + 1;
  uint8_t* frame = MapPages(kPages);
  frame[2 * kStride] = 11;
  frame[2 * kStride + 2] = 22;
  ASSERT_EQ(Q_ClrConvertDirect(CS_RGB, CS_BGR, frame, frame, 1, 3, kPad, kPad), SUCCESS);
  EXPECT_TRUE(frame[2 * kStride] == 22 && frame[2 * kStride + 2] == 11);
  UnmapPages(frame, kPages);
}

}  // namespace
