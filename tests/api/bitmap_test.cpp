// Conversions whose result is a bitmap: its lines are those of the plain conversion, at the stride of a DIB.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "support/converters.h"
#include "support/system.h"

namespace {

using namespace qv_test;

struct Size {
  int32_t width, height, in_pad, out_pad;
};

BitmapHandle Marked() { return {.nBitsPerPixel = 0xEEEE, .pBits = reinterpret_cast<uint8_t*>(uintptr_t{16})}; }
bool Untouched(const BitmapHandle& bitmap) {
  const BitmapHandle marked = Marked();
  return std::memcmp(&bitmap, &marked, sizeof bitmap) == 0;
}

// The bitmap has the lines that begin every `distance` bytes in `expected`; releases it.
void ExpectLines(BitmapHandle bitmap, const Size& size, const uint8_t* expected, size_t distance) {
  const auto line_bytes = static_cast<uint32_t>((3 * size.width + 3) / 4 * 4), rows = uint32_t(size.height);
  const BitmapHandle wanted = {32, 24, size.width, -size.height, line_bytes, line_bytes * rows, bitmap.pBits};
  ASSERT_EQ(std::memcmp(&bitmap, &wanted, sizeof wanted), 0);
  for (uint32_t y = 0; y < rows; ++y) {
    const uint8_t* line = bitmap.pBits + y * line_bytes;
    const auto pixels = static_cast<size_t>(3 * size.width);
    EXPECT_EQ(std::memcmp(line, expected + y * distance, pixels), 0) << "line " << y;
    EXPECT_TRUE(std::all_of(line + pixels, line + line_bytes, [](uint8_t byte) { return byte == 0; }));
  }
  EXPECT_EQ(Q_FreeBitmap(&bitmap), SUCCESS);
}

// Of frames of many sizes, with an input that ends at an inaccessible page, padding of the last line included.
void ForSizes(size_t pixel, const std::function<void(const Size& size, const uint8_t* source)>& test) {
  for (int32_t width = 1; width <= 9; ++width) {
    for (int32_t height = 1; height <= 3; ++height) {
      for (const int32_t in_pad : {0, 1, 3, 7}) {
        for (const int32_t out_pad : {0, 1, 3, 7}) {
          SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << in_pad << ", " << out_pad);
          const size_t line = static_cast<size_t>(width) * pixel + static_cast<size_t>(in_pad);
          const GuardedBuffer source(RandomBytes(line * static_cast<size_t>(height)));
          test({width, height, in_pad, out_pad}, source.data());
        }
      }
    }
  }
}

TEST(Bitmaps, HaveTheLinesOfTheConversion) {
  const struct {
    uint32_t src, dst, method;  // 0: without a converter
    size_t pixel = 3;
  } kCases[] = {{CS_HSV, CS_BGR, METHOD_FORMULA},
                {CS_YUY2, CS_RGB, METHOD_FORMULA, 2},
                {CS_CMYK, CS_BGR, METHOD_ICC, 4},
                {CS_LAB, CS_RGB, METHOD_TABLE},
                {CS_CMYK, CS_RGB, 0, 4},
                {CS_YUY2, CS_BGR, 0, 2},
                {CS_RGB, CS_RGB, 0}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.src << " to " << c.dst << " by " << c.method);
    const ConverterPtr made = c.method != 0 ? MakeConverter(c.src, c.dst, Params(c.method)) : nullptr;
    ColorConverter* const converter = made.get();
    ForSizes(c.pixel, [&](const Size& s, const uint8_t* source) {
      const auto convert = [&](const uint8_t* from, BitmapHandle* to) {
        return converter
                   ? Q_ClrConvertToBitmap(converter, from, to, 32, s.width, s.height, s.in_pad, s.out_pad)
                   : Q_ClrConvertDirectToBitmap(c.src, c.dst, from, to, 32, s.width, s.height, s.in_pad, s.out_pad);
      };
      Bytes expected(static_cast<size_t>(3 * s.width * s.height));
      const int32_t status =
          converter ? Q_ClrConvert(converter, source, expected.data(), s.width, s.height, s.in_pad, 0)
                    : Q_ClrConvertDirect(c.src, c.dst, source, expected.data(), s.width, s.height, s.in_pad, 0);
      EXPECT_EQ(status, c.src == CS_YUY2 && s.width % 2 != 0 ? ERR_INV_WIDTH_ALIGNMENT : SUCCESS);
      BitmapHandle bitmap = Marked();
      ASSERT_EQ(convert(source, &bitmap), status);
      ASSERT_EQ(Untouched(bitmap), status != SUCCESS);
      if (status != SUCCESS) return;
      ExpectLines(bitmap, s, expected.data(), 3 * static_cast<size_t>(s.width));
      EXPECT_EQ(convert(source + 1, &bitmap), ERR_BAD_POINTER);
    });
  }
}

// The odd copy of equal spaces into a block whose lines are further apart: the bitmap takes what then stands there.
TEST(Bitmaps, OfEqualSpacesShowTheCopyAsItIs) {
  const ConverterPtr converter = MakeConverter(CS_RGB, CS_RGB);
  ForSizes(3, [&](const Size& size, const uint8_t* source) {
    const auto line = static_cast<size_t>(3 * size.width), rows = static_cast<size_t>(size.height);
    const auto in_pad = static_cast<size_t>(size.in_pad), out_pad = static_cast<size_t>(size.out_pad);
    const bool whole = in_pad < 2 && out_pad < 2;
    Bytes block((line + 2 * out_pad) * rows + line);
    for (size_t y = 0; y < rows; ++y)
      std::memcpy(&block[y * (whole ? line : out_pad)], source + y * (whole ? line : in_pad), line);
    BitmapHandle bitmap = Marked();
    ASSERT_EQ(
        Q_ClrConvertToBitmap(converter.get(), source, &bitmap, 32, size.width, size.height, size.in_pad, size.out_pad),
        SUCCESS);
    ExpectLines(bitmap, size, block.data(), line + out_pad);
  });
}

TEST(Bitmaps, CheckTheirArgumentsInOrder) {
  const ConverterPtr to_rgb = MakeConverter(CS_CMYK, CS_RGB), to_cmyk = MakeConverter(CS_RGB, CS_CMYK);
  const ConverterPtr unknown = MakeConverter(200, 200);
  GuardedBuffer short_handle(1711), forged(1712), source(4 * 2 * 2);
  std::memcpy(forged.data(), to_cmyk.get(), 1712);
  auto* const no_handle = reinterpret_cast<ColorConverter*>(short_handle.data());
  auto* const no_converter = reinterpret_cast<ColorConverter*>(forged.data());
  BitmapHandle bitmap = Marked();
  const void *const pixels = source.data(), *const beyond = source.data() + source.size() - 1;
  const struct {
    ColorConverter* handle;
    const void* src;
    BitmapHandle* bitmap;
    int32_t width, height, in_pad, out_pad, status;
  } kCases[] = {
      {no_handle, nullptr, &bitmap, 2, 2, 0, 0, ERR_INV_PARAMETER},
      {no_handle, beyond, nullptr, 2, 2, 0, 0, ERR_INV_PARAMETER},
      {no_handle, beyond, &bitmap, 2, 2, 0, 0, ERR_BAD_POINTER},
      {nullptr, pixels, &bitmap, 2, 2, 0, 0, ERR_BAD_POINTER},
      {no_converter, beyond, &bitmap, 2, 2, 0, 0, ERR_BAD_POINTER},
      {no_converter, pixels, &bitmap, 2, 2, 3, 0, ERR_BAD_POINTER},
      {no_converter, pixels, &bitmap, 2, 2, 2, 0, ERR_INV_CONVERTER},
      {to_cmyk.get(), beyond, &bitmap, 2, 2, 0, 0, ERR_BAD_POINTER},
      {to_cmyk.get(), pixels, &bitmap, 0, 0, -1, -1, ERR_UNSUPPORTED_COLORSPACE},
      {unknown.get(), beyond, &bitmap, 2, 2, 0, 0, ERR_UNSUPPORTED_COLORSPACE},
      {to_rgb.get(), beyond, &bitmap, 0, 2, 0, 0, ERR_INV_PARAMETER},
      {to_rgb.get(), beyond, &bitmap, 2, INT32_MIN, 0, 0, ERR_INV_PARAMETER},
      {to_rgb.get(), pixels, &bitmap, 2, 2, 0, INT32_MIN, ERR_INV_PARAMETER},
      {to_rgb.get(), pixels, &bitmap, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, ERR_BAD_POINTER},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Q_ClrConvertToBitmap(c.handle, c.src, c.bitmap, 31, c.width, c.height, c.in_pad, c.out_pad), c.status)
        << "case " << &c - kCases;
    EXPECT_TRUE(Untouched(bitmap)) << "case " << &c - kCases;
  }
  const struct {
    uint32_t src, dst;
    const void* from;
    int32_t width, height, out_pad, status;
  } kDirect[] = {{200, CS_CMYK, pixels, 0, 2, 0, ERR_INV_PARAMETER},
                 {200, CS_RGB, pixels, 0, 2, 0, ERR_INV_PARAMETER},
                 {CS_CMYK, CS_RGB, nullptr, 2, 2, 0, ERR_INV_PARAMETER},
                 {200, CS_RGB, beyond, 2, 2, 0, ERR_UNSUPPORTED_COLORSPACE},
                 {CS_YVU9, CS_RGB, beyond, 2, 2, 0, ERR_INV_YUV9_SIZE},
                 {CS_CMYK, CS_RGB, beyond, 2, 2, -9, ERR_BAD_POINTER},
                 {CS_CMYK, CS_RGB, pixels, 2, 2, -9, ERR_INV_STRUCT_SIZE}};
  for (const auto& c : kDirect) {
    EXPECT_EQ(Q_ClrConvertDirectToBitmap(c.src, c.dst, c.from, &bitmap, 31, c.width, c.height, -9, c.out_pad),
              c.status);
    EXPECT_TRUE(Untouched(bitmap));
  }
  EXPECT_EQ(Q_ClrConvertDirectToBitmap(CS_CMYK, CS_RGB, pixels, nullptr, 32, 2, 2, 0, 0), ERR_INV_PARAMETER);

  // A record that cannot be filled: a converter's call does not tell, the other one does.
  GuardedBuffer read_only(32), too_short(31), whole(32);
  read_only.MakeReadOnly();
  for (GuardedBuffer* const record : {&read_only, &too_short, &whole}) {
    auto* const to = reinterpret_cast<BitmapHandle*>(record->data());
    const uint32_t size = record == &whole ? 33 : 32;
    EXPECT_EQ(Q_ClrConvertToBitmap(to_rgb.get(), pixels, to, size, 2, 2, 0, 0), SUCCESS);
    EXPECT_EQ(Q_ClrConvertDirectToBitmap(CS_CMYK, CS_RGB, pixels, to, size, 2, 2, 0, 0),
              size == 33 ? ERR_INV_STRUCT_SIZE : ERR_BAD_POINTER);
    EXPECT_TRUE(std::ranges::all_of(record->bytes(), [](uint8_t byte) { return byte == 0; }));
  }
}

}  // namespace
