// Conversions by emulation table: a dense grid of three-byte entries sampled from a transform, the first input channel
// slowest. A result is the mean of two opposite corners of the colour's cell; on a node both are that node. A cell at
// the end of a channel has its upper corner at the channel's first node (intended: the last node is never read, and
// values above the one before it come out half way to the other end). Only a and b reach their last node.
//
// So no lookup reads the grid's last entry, and all may read a byte more than the three of theirs.
#include <array>
#include <cstring>

#include "qvclr/kernels/kernels.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/kernels/emulation.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

using PerChannel = std::array<uint8_t, 4>;

struct Grid {
  size_t channels;
  int shift;               // a step of the grid is 2 to this power
  bool from_rgb;           // else to RGB
  PerChannel source_flip;  // makes values that count from the first node on, which of signed ones is at -128
  PerChannel upper_nodes;  // mask of an upper node's number: the last one wraps to 0, or passes
  PerChannel target_flip;  // makes unsigned values of the entry's

  constexpr int Nodes() const { return (256 >> shift) + 1; }
};
constexpr PerChannel kSignedAb = {0, 0x80, 0x80, 0};
constexpr Grid kCmykToRgb = {4, 4, false, {}, {15, 15, 15, 15}, {}};
constexpr Grid kRgbToLab = {3, 3, true, {}, {31, 31, 31}, kSignedAb};
constexpr Grid kLabToRgb = {3, 3, false, kSignedAb, {31, 63, 63}, {}};

template <const Grid& kGrid>
void TablePixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const bool swap_source = kGrid.from_rgb && !args.rgb_first, swap_target = !kGrid.from_rgb && !args.rgb_first;
  constexpr size_t kNodes = kGrid.Nodes();
  constexpr int kToNextNode = (1 << kGrid.shift) - 1;
  size_t lower = 0, upper = 0;
  for (size_t i = 0; i < kGrid.channels; ++i) {
    const int value = src[swap_source ? 2 - i : i] ^ kGrid.source_flip[i];
    lower = lower * kNodes + static_cast<size_t>(value >> kGrid.shift);
    upper = upper * kNodes + (static_cast<size_t>((value + kToNextNode) >> kGrid.shift) & kGrid.upper_nodes[i]);
  }
  const PerChannel& flip = kGrid.target_flip;
  const uint8_t *a = args.table + 3 * lower, *b = args.table + 3 * upper;
  for (size_t i = 0; i < 3; ++i) {
    const int mean = ((a[i] ^ flip[i]) + (b[i] ^ flip[i])) >> 1;
    dst[swap_target ? 2 - i : i] = static_cast<uint8_t>(mean ^ flip[i]);
  }
}

#if QV_HAS_VECTORS
// Vectors of pixels of four bytes.
constexpr size_t kGroup = hn::MaxLanes(U32());
constexpr size_t kPiece = 12;  // bytes of four pixels of three, which pieces of 16 bytes hold
constexpr size_t kBehind = 2;  // pixels that cover what the last piece holds more

HWY_INLINE ByteVector InEveryPixel(const PerChannel& bytes) {
  return hn::BitCast(U8(), hn::Set(U32(), uint32_t{bytes[0]} | bytes[1] << 8 | bytes[2] << 16 |
                                              static_cast<uint32_t>(bytes[3]) << 24));
}

// For shuffles in blocks: pixels of three bytes into those of four, and back in either order.
constexpr uint8_t kNone = 0x80;
alignas(16) constexpr uint8_t kApart[16] = {0, 1, 2, kNone, 3, 4, 5, kNone, 6, 7, 8, kNone, 9, 10, 11, kNone};
alignas(16) constexpr uint8_t kTogether[2][16] = {{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, kNone, kNone, kNone, kNone},
                                                  {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, kNone, kNone, kNone, kNone}};

template <size_t kSrcBytes>
HWY_INLINE ByteVector LoadPixels(const uint8_t* src) {
  if constexpr (kSrcBytes == 4) return hn::LoadU(U8(), src);
  return hn::TableLookupBytes(LoadPieces(U8(), src, kPiece), hn::LoadDup128(U8(), kApart));
}

// Pixels on their way through a table: the offsets of both corners' entries, then those entries.
struct Corners {
  static constexpr size_t kMost = 128;  // enough for the stores of one step to be done when the next one loads
  alignas(64) uint32_t lower[kMost];
  alignas(64) uint32_t upper[kMost];
};

// Numbers of nodes, of the even and of the odd channels, times an entry's distance to the next node of its channel.
template <const Grid& kGrid>
class Offsets {
 public:
  explicit HWY_INLINE Offsets(bool swapped) {
    std::array<int, 4> steps{};
    for (size_t i = kGrid.channels, step = 3; i > 0; --i, step *= kGrid.Nodes()) {
      steps[swapped ? 3 - i : i - 1] = static_cast<int>(step);
    }
    even_ = hn::BitCast(I16(), hn::Set(I32(), steps[0] | steps[2] << 16));
    odd_ = hn::BitCast(I16(), hn::Set(I32(), steps[1] | steps[3] << 16));
  }

  HWY_INLINE void Store(hn::Vec<U16> even, hn::Vec<U16> odd, uint32_t* offsets) const {
    auto unused = hn::Zero(I32());
    auto sum = hn::ReorderWidenMulAccumulate(I32(), hn::BitCast(I16(), even), even_, unused, unused);
    sum = hn::ReorderWidenMulAccumulate(I32(), hn::BitCast(I16(), odd), odd_, sum, unused);
    hn::Store(hn::BitCast(U32(), sum), U32(), offsets);
  }

 private:
  hn::Vec<I16> even_, odd_;
};

// Of the first `pixels` of `width`.
template <const Grid& kGrid>
HWY_INLINE void FindCorners(const uint8_t* src, size_t pixels, size_t width, bool swapped, Corners& corners) {
  constexpr size_t kRead = kGroup + (kGrid.channels == 3 ? kBehind : 0);
  constexpr int kShift = kGrid.shift;
  const auto low_byte = hn::Set(U16(), uint16_t{0xFF});
  const auto flip = InEveryPixel(kGrid.source_flip);
  const auto lower_nodes = hn::Set(U16(), uint16_t{255 >> kShift});
  const auto upper_nodes = hn::BitCast(U16(), InEveryPixel(kGrid.upper_nodes));
  const auto even_upper_nodes = hn::And(upper_nodes, low_byte), odd_upper_nodes = hn::ShiftRight<8>(upper_nodes);
  const auto to_next_node = hn::Set(U8(), uint8_t{(1 << kShift) - 2});  // the mean adds 1, and takes half
  const Offsets<kGrid> offsets(swapped);
  uint8_t last_pixels[kRead * kGrid.channels] = {};
  for (size_t i = 0; i < pixels; i += kGroup) {
    const uint8_t* group = src + i * kGrid.channels;
    if (width - i < kRead) {
      std::memcpy(last_pixels, group, (width - i) * kGrid.channels);
      group = last_pixels;
    }
    const auto values = hn::Xor(LoadPixels<kGrid.channels>(group), flip);
    const auto below = hn::BitCast(U16(), values);
    const auto above = hn::BitCast(U16(), hn::AverageRound(values, to_next_node));
    offsets.Store(hn::And(hn::ShiftRight<kShift>(below), lower_nodes), hn::ShiftRight<8 + kShift>(below),
                  corners.lower + i);
    offsets.Store(hn::And(hn::ShiftRight<kShift - 1>(above), even_upper_nodes),
                  hn::And(hn::ShiftRight<7 + kShift>(above), odd_upper_nodes), corners.upper + i);
  }
}

HWY_INLINE uint32_t EntryAt(const uint8_t* table, uint64_t offset) {
  uint32_t entry;
  std::memcpy(&entry, table + offset, sizeof entry);
  return entry;
}

// By plain loads, which on the processors at hand are no slower than gathers.
HWY_INLINE void LookUpFour(const uint8_t* table, uint32_t* offsets) {
  uint64_t two[2];
  std::memcpy(two, offsets, sizeof two);
  offsets[0] = EntryAt(table, two[0] & UINT32_MAX);
  offsets[1] = EntryAt(table, two[0] >> 32);
  offsets[2] = EntryAt(table, two[1] & UINT32_MAX);
  offsets[3] = EntryAt(table, two[1] >> 32);
}

template <const Grid& kGrid>
HWY_INLINE void StoreMeans(const Corners& corners, size_t pixels, bool swapped, uint8_t* dst) {
  const auto together = hn::LoadDup128(U8(), kTogether[swapped]);
  const auto flip = hn::Not(InEveryPixel(kGrid.target_flip));  // also turns the mean's rounding down
  const auto means = [&](size_t i) HWY_ATTR {
    const auto a = hn::BitCast(U8(), hn::Load(U32(), corners.lower + i));
    const auto b = hn::BitCast(U8(), hn::Load(U32(), corners.upper + i));
    const auto mean = hn::Xor(hn::AverageRound(hn::Xor(a, flip), hn::Xor(b, flip)), flip);
    return hn::TableLookupBytes(mean, together);
  };
  size_t i = 0;
  for (; i + kGroup + kBehind <= pixels; i += kGroup) StorePieces(U8(), means(i), dst + 3 * i, kPiece);
  for (; i < pixels; i += kGroup) {
    uint8_t last_pixels[3 * (kGroup + kBehind)];
    StorePieces(U8(), means(i), last_pixels, kPiece);
    std::memcpy(dst + 3 * i, last_pixels, 3 * HWY_MIN(kGroup, pixels - i));
  }
}
#endif  // QV_HAS_VECTORS

template <const Grid& kGrid>
Status TableRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
#if QV_HAS_VECTORS
  Corners corners;
  while (width > 0) {
    const size_t pixels = HWY_MIN(width, Corners::kMost);
    FindCorners<kGrid>(src, pixels, width, kGrid.from_rgb && !args.rgb_first, corners);
    for (size_t i = 0; i < pixels; i += 4) {
      LookUpFour(args.table, corners.lower + i);
      LookUpFour(args.table, corners.upper + i);
    }
    StoreMeans<kGrid>(corners, pixels, !kGrid.from_rgb && !args.rgb_first, dst);
    src += pixels * kGrid.channels, dst += pixels * 3, width -= pixels;
  }
  return kSuccess;
#else
  return ScalarRow<TablePixel<kGrid>, kGrid.channels, 3>(src, dst, width, args);
#endif
}

Status CmykToRgbRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return TableRow<kCmykToRgb>(src, dst, width, args);
}
Status RgbToLabRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return TableRow<kRgbToLab>(src, dst, width, args);
}
Status LabToRgbRow(const uint8_t* src, uint8_t* dst, size_t width, const RowArgs& args) {
  return TableRow<kLabToRgb>(src, dst, width, args);
}

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
QV_ROW_OF_THIS_CPU(CmykToRgbRow)
QV_ROW_OF_THIS_CPU(RgbToLabRow)
QV_ROW_OF_THIS_CPU(LabToRgbRow)
}  // namespace
const Kernel EmuCMYKToRGB = {"EmuCMYKToRGB", CmykToRgbRowOfThisCpu, 4, 3};
const Kernel EmuRGBToLab = {"EmuRGBToLab", RgbToLabRowOfThisCpu, 3, 3};
const Kernel EmuLabToRGB = {"EmuLabToRGB", LabToRgbRowOfThisCpu, 3, 3};
}  // namespace qv
#endif
