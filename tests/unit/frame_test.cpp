#include "qvclr/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/bytes.h"

namespace {
using namespace qv;
using qv_test::Bytes;

TEST(Frame, SizesRoundUpPerLineOrPerFrame) {
  struct Case {
    uint32_t space;
    int32_t width, height, pad;
    size_t line, to_last_pixel, with_padding, kernel;
  };
  constexpr int32_t kMost = INT32_MAX;
  for (const Case& c :
       {Case{CS_YVU9, 3, 1, 0, 4, 4, 4, 4}, Case{CS_YVU9, 3, 3, 2, 4, 16, 18, 17},  // 81 bits in 11 bytes
        Case{CS_Y41P, 3, 3, 0, 5, 15, 15, 14},                                      // 108 bits in 14 bytes
        Case{CS_YUY2, 5, 2, -7, 10, 20, 20, 20}, Case{CS_RGB, 1, 1, 9, 3, 3, 12, 12},
        Case{CS_CMYK, kMost, 1, kMost, 0x1fffffffc, 0x1fffffffc, 0x27ffffffb, 0x27ffffffb},
        Case{CS_CMYK, kMost, kMost, kMost, 0x1fffffffc, SIZE_MAX, SIZE_MAX, SIZE_MAX}}) {
    const Frame frame{FindSpace(c.space), c.width, c.height, c.pad};
    EXPECT_EQ(frame.LineBytes(), c.line) << frame.space->name;
    EXPECT_EQ(frame.BytesToLastPixel(), c.to_last_pixel) << frame.space->name;
    EXPECT_EQ(frame.BytesWithPadding(), c.with_padding) << frame.space->name;
    EXPECT_EQ(frame.KernelBytes(), c.kernel) << frame.space->name;
  }
}

// Lines of pixels of `a` bytes to pixels of `b` bytes, as a row function may go: forward, pixel by pixel.
void ConvertLines(const SourceLines& from, size_t a, const TargetLines& to, size_t b) {
  for (size_t y = 0; y < from.count; ++y) {
    for (size_t x = 0; x < from.bytes / a; ++x) {
      const Bytes pixel(from.Line(y) + x * a, from.Line(y) + x * a + a);
      for (size_t i = 0; i < b; ++i) to.Line(y)[x * b + i] = pixel[i % a];
    }
  }
}

TEST(Overlap, GivesWhatSeparateBuffersGive) {
  std::mt19937 random(1);
  const auto below = [&](size_t limit) { return random() % limit; };
  for (int round = 0; round < 100000; ++round) {
    Bytes shared(160);
    std::ranges::generate(shared, random);
    const size_t width = 1 + below(6), count = 1 + below(4), a = 1 + below(4), b = 1 + below(4);
    const bool folded = below(8) == 0;  // strides below the length of a line
    const size_t src_stride = folded ? below(width * a + 1) : width * a + below(6);
    const size_t dst_stride = folded ? below(width * b + 1) : width * b + below(6);
    const size_t src_at = below(40), dst_at = below(4) == 0 ? src_at : below(40);
    const auto from = [&](const Bytes& bytes) { return SourceLines{&bytes[src_at], width * a, src_stride, count}; };
    const auto to = [&](Bytes& bytes, size_t size) {
      return TargetLines{&bytes[dst_at], width * size, dst_stride, count};
    };
    Bytes converted = shared, copied = shared, copy = shared;
    ConvertLines(from(shared), a, to(converted, b), b);
    ConvertLines(from(shared), a, to(copied, a), a);
    ASSERT_EQ(CopyLines(from(copy), to(copy, a)), kSuccess);
    ASSERT_EQ(copy, copied) << "round " << round;

    SafeInput input;
    ASSERT_EQ(input.Prepare(from(shared), to(shared, b)), kSuccess);
    ConvertLines(input.lines(), a, to(shared, b), b);
    ASSERT_EQ(shared, converted) << "round " << round;
  }
}

}  // namespace
