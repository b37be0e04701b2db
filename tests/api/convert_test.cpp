// The conversion of buffers: every check in its order, copies, paddings, overlaps and guard pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <span>

#include "support/converters.h"
#include "support/guarded.h"

namespace {

using namespace qv_test;
using Bytes = std::vector<uint8_t>;

constexpr int32_t kMax = INT32_MAX;

TEST(ConvertByHandle, ChecksInTheirOrder) {
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_CMYK);
  const ConverterPtr copier = MakeConverter(200, 200);
  ASSERT_TRUE(converter && copier);
  GuardedBuffer in(3 * 4), out(4 * 4), small(3);
  GuardedBuffer record(1712);
  auto* forged = reinterpret_cast<ColorConverter*>(record.data());

  EXPECT_EQ(Q_ClrConvert(nullptr, small.data(), small.data(), 4, 1, 0, 1), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrConvert(forged, nullptr, small.data(), 4, 1, 0, 1), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrConvert(forged, small.data(), nullptr, 4, 1, 0, 1), ERR_INV_PARAMETER);
  auto* beyond = reinterpret_cast<ColorConverter*>(record.data() + 1);
  for (const auto& [width, height, pad_in, pad_out] :
       {std::array{0, 1, 0, 0}, {-1, 1, 0, 0}, {1, 0, 0, 0}, {1, kMax + 0, -1, 0}, {1, 1, 0, INT32_MIN}}) {
    EXPECT_EQ(Q_ClrConvert(beyond, small.data(), small.data(), width, height, pad_in, pad_out), ERR_INV_PARAMETER);
  }
  EXPECT_EQ(Q_ClrConvert(beyond, small.data(), small.data(), 4, 1, 0, 1), ERR_BAD_POINTER) << "the handle";
  EXPECT_EQ(Q_ClrConvert(forged, in.data(), small.data(), 4, 1, 0, 1), ERR_BAD_POINTER) << "0 to 0: the output";
  EXPECT_EQ(Q_ClrConvert(forged, small.data(), out.data(), 4, 1, 0, 1), ERR_BAD_POINTER) << "the input";
  EXPECT_EQ(Q_ClrConvert(forged, in.data(), out.data(), 4, 1, 0, 1), ERR_INV_CONVERTER);
  const uint32_t unknown[] = {1712, 77, 78};
  std::memcpy(record.data(), unknown, sizeof unknown);
  EXPECT_EQ(Q_ClrConvert(forged, small.data(), small.data(), 4, 1, 0, 1), ERR_INV_CONVERTER);
  EXPECT_EQ(Q_ClrConvert(copier.get(), small.data(), small.data(), 4, 1, 0, 1), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), 4, 1, 0, 0), SUCCESS);
  EXPECT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), kMax, kMax, kMax, kMax), ERR_BAD_POINTER);
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
  ASSERT_TRUE(copier);
  const Bytes source = RandomBytes(64);
  // 2 x 3 pixels: lines of 6 bytes. A padding of 1 is ignored: 18 bytes in one block, the rest untouched.
  Bytes target(64, 0xEE);
  ASSERT_EQ(Q_ClrConvert(copier.get(), source.data(), target.data(), 2, 3, 1, 1), SUCCESS);
  EXPECT_TRUE(std::equal(target.begin(), target.begin() + 18, source.begin()));
  EXPECT_EQ(std::ranges::count(target, 0xEE), 64 - 18);
  // With 4 and 5 each line starts 4 (5) bytes behind the start of the one before.
  Bytes expected(64, 0xEE);
  for (size_t line = 0; line < 3; ++line) std::copy_n(source.begin() + 4 * line, 6, expected.begin() + 5 * line);
  target.assign(64, 0xEE);
  ASSERT_EQ(Q_ClrConvert(copier.get(), source.data(), target.data(), 2, 3, 4, 5), SUCCESS);
  EXPECT_EQ(target, expected);
  // And the same when the target overlaps the source.
  Bytes overlapping(source);
  overlapping.resize(80);
  ASSERT_EQ(Q_ClrConvert(copier.get(), overlapping.data(), overlapping.data() + 3, 2, 3, 4, 5), SUCCESS);
  EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + 16, overlapping.begin() + 3));
}

TEST(ConvertByHandle, PairsWithoutAnRgbSideTellNothing) {
  const ConverterPtr converter = MakeConverter(CS_CMY, CS_CMYK), odd = MakeConverter(CS_CMY, CS_YUY2);
  GuardedBuffer in(2 * 3), out(2 * 4);
  std::fill_n(in.data(), 6, uint8_t{200});
  ASSERT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), 2, 1, 0, 0), SUCCESS);
  EXPECT_EQ(out.data()[3], 35) << "17.5 % of 200";
  // The direct conversion behind it wants the last padding too and refuses; the caller is not told.
  std::fill_n(out.data(), 8, uint8_t{7});
  EXPECT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), 2, 1, 1, 0), SUCCESS);
  EXPECT_EQ(out.data()[3], 7);
  EXPECT_EQ(Q_ClrConvert(odd.get(), in.data(), out.data(), 1, 1, 0, 0), SUCCESS);
}

TEST(ConvertByHandle, KernelsWantTheLastPaddingToo) {
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_CMY);
  constexpr size_t kFrame = 2 * 6 + 3;  // 2 x 2 pixels, 3 bytes between the lines
  for (size_t in_size = kFrame - 1; in_size <= kFrame + 3; ++in_size) {
    for (size_t out_size = kFrame - 1; out_size <= kFrame + 3; ++out_size) {
      GuardedBuffer in(in_size), out(out_size);
      std::fill_n(out.data(), out_size, uint8_t{0x55});
      const bool below = in_size < kFrame || out_size < kFrame, whole = in_size == kFrame + 3 && out_size == kFrame + 3;
      const int32_t expected = below ? ERR_BAD_POINTER : whole ? SUCCESS : ERR_INV_PARAMETER;
      ASSERT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), 2, 2, 3, 3), expected)
          << in_size << ' ' << out_size;
      ASSERT_EQ(std::ranges::count(out.bytes(), 0x55) == static_cast<ptrdiff_t>(out_size), !whole) << "what is written";
    }
  }
}

TEST(ConvertDirect, ChecksInTheirOrder) {
  GuardedBuffer in(8 * 3), out(8 * 4);
  EXPECT_EQ(Q_ClrConvertDirect(99, 98, nullptr, out.data(), 0, 0, 0, 0), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrConvertDirect(99, 98, in.data(), nullptr, 1, 1, 0, 0), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrConvertDirect(99, 98, in.data(), out.data(), 0, 1, 0, 0), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrConvertDirect(99, 98, in.data(), out.data(), 1, -1, 0, 0), ERR_INV_PARAMETER);
  EXPECT_EQ(Q_ClrConvertDirect(CS_YUY2, 98, in.data(), out.data(), kMax, 1, 0, 0), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(Q_ClrConvertDirect(99, CS_YUY2, in.data(), out.data(), kMax, 1, 0, 0), ERR_UNSUPPORTED_COLORSPACE);
  EXPECT_EQ(Q_ClrConvertDirect(CS_YUY2, CS_YVU9, in.data(), out.data(), kMax, 1, 0, 0), ERR_INV_WIDTH_ALIGNMENT);
  EXPECT_EQ(Q_ClrConvertDirect(CS_YVU9, CS_YUY2, in.data(), out.data(), kMax, 1, 0, 0), ERR_INV_YUV9_SIZE);
  EXPECT_EQ(Q_ClrConvertDirect(CS_RGB, CS_CMYK, in.data(), out.data(), 9, 1, 0, 0), ERR_BAD_POINTER);
  EXPECT_EQ(Q_ClrConvertDirect(CS_RGB, CS_CMYK, in.data(), out.data(), 8, 1, 1, 0), ERR_BAD_POINTER) << "last padding";
  EXPECT_EQ(Q_ClrConvertDirect(CS_RGB, CS_CMYK, in.data(), out.data(), 8, 1, -9, -9), SUCCESS) << "below 0 is 0";
  EXPECT_EQ(Q_ClrConvertDirect(CS_CMY, CS_CMY, out.data(), out.data(), 11, 1, 0, 0), ERR_BAD_POINTER);
  EXPECT_EQ(Q_ClrConvertDirect(CS_CMY, CS_CMY, out.data(), out.data(), 8, 1, -1, 0), ERR_INPLACE_PADDING);
  EXPECT_EQ(Q_ClrConvertDirect(CS_CMY, CS_CMY, out.data(), out.data(), 8, 1, 0, 4), SUCCESS);
}

TEST(ConvertDirect, EqualSpacesAreCopiedLineByLine) {
  const Bytes source = RandomBytes(3 * 10);
  for (const bool in_place : {false, true}) {
    Bytes target(40, 0xEE);
    if (in_place) std::ranges::copy(source, target.begin());
    Bytes expected(target);
    for (size_t y = 0; y < 3; ++y) std::copy_n(source.begin() + 8 * y, 6, expected.begin() + 11 * y);
    const uint8_t* from = in_place ? target.data() : source.data();
    ASSERT_EQ(Q_ClrConvertDirect(CS_HSV, CS_HSV, from, target.data(), 2, 3, 2, 5), SUCCESS);
    EXPECT_EQ(target, expected) << "in place: " << in_place;
  }
}

TEST(ConvertDirect, ChainedPairsEqualTheirTwoKernels) {
  constexpr int32_t kWidth = 37, kHeight = 5, kPadIn = 2, kPadOut = 3;
  const auto line = [](uint32_t space) { return size_t{kWidth} * (space == CS_CMYK ? 4 : 3); };
  for (const auto& [from, to] : {std::pair{CS_CMY, CS_CMYK}, {CS_CMYK, CS_CMY}}) {
    const Bytes source = RandomBytes((line(from) + kPadIn) * kHeight);
    Bytes rgb(3 * kWidth * kHeight), chained((line(to) + kPadOut) * kHeight, 0xEE), steps(chained);
    ASSERT_EQ(Q_ClrConvertDirect(from, CS_RGB, source.data(), rgb.data(), kWidth, kHeight, kPadIn, 0), SUCCESS);
    ASSERT_EQ(Q_ClrConvertDirect(CS_RGB, to, rgb.data(), steps.data(), kWidth, kHeight, 0, kPadOut), SUCCESS);
    ASSERT_EQ(Q_ClrConvertDirect(from, to, source.data(), chained.data(), kWidth, kHeight, kPadIn, kPadOut), SUCCESS);
    EXPECT_EQ(chained, steps);
  }
}

// A buffer that ends at an inaccessible page converts; one byte fewer is refused before anything is written.
TEST(ConvertDirect, StaysInsideItsBuffersAtEveryWidth) {
  for (const auto& [from, to] : {std::pair{CS_RGB, CS_BGR},
                                 {CS_BGR, CS_RGB},
                                 {CS_RGB, CS_CMY},
                                 {CS_CMY, CS_BGR},
                                 {CS_BGR, CS_CMYK},
                                 {CS_CMYK, CS_RGB}}) {
    const size_t in_pixel = from == CS_CMYK ? 4 : 3, out_pixel = to == CS_CMYK ? 4 : 3;
    for (int32_t width = 1; width <= 70; ++width) {
      const size_t pixels = static_cast<size_t>(width) * 2;
      GuardedBuffer in(RandomBytes(pixels * in_pixel)), out(pixels * out_pixel);
      ASSERT_EQ(Q_ClrConvertDirect(from, to, in.data(), out.data(), width, 2, 0, 0), SUCCESS);
      ASSERT_EQ(Q_ClrConvertDirect(from, to, in.data() + 1, out.data(), width, 2, 0, 0), ERR_BAD_POINTER);
      std::fill_n(out.data(), out.size(), uint8_t{0x55});
      ASSERT_EQ(Q_ClrConvertDirect(from, to, in.data(), out.data() + 1, width, 2, 0, 0), ERR_BAD_POINTER);
      ASSERT_EQ(std::ranges::count(out.bytes(), 0x55), static_cast<ptrdiff_t>(out.size()));
    }
  }
}

// Lines that lie more than 2^31 bytes apart: a whole number in 32 bits would wrap on the way.
TEST(ConvertDirect, LargeFrames) {
  constexpr int32_t kPad = 1 << 30;
  constexpr size_t kStride = 3 + size_t{kPad}, kPages = 3 * kStride / 4096 + 1;
  uint8_t* frame = MapPages(kPages);
  frame[2 * kStride] = 11;
  frame[2 * kStride + 2] = 22;
  ASSERT_EQ(Q_ClrConvertDirect(CS_RGB, CS_BGR, frame, frame, 1, 3, kPad, kPad), SUCCESS);
  EXPECT_EQ(frame[2 * kStride], 22);
  EXPECT_EQ(frame[2 * kStride + 2], 11);
  UnmapPages(frame, kPages);
}

}  // namespace
