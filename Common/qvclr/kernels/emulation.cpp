// Conversions by emulation table: a dense grid of three-byte entries sampled from a transform, the first input channel
// slowest. A result is the mean of two opposite corners of the colour's cell; on a node both are that node. A cell at
// the end of a channel has its upper corner at the channel's first node (intended: the last node is never read, and
// values above the one before it come out half way to the other end). Only a and b reach their last node.
#include "qvclr/kernels/kernels.h"
#include "qvclr/kernels/pixel.h"

namespace qv {
namespace {

// Numbers of entries.
struct Corners {
  int lower = 0, upper = 0;
};

enum class LastNode : uint8_t { kWraps, kReached };

// Goes on to the next faster channel.
template <int kStep>
void Narrow(Corners& corners, int value, LastNode last_node = LastNode::kWraps) {
  constexpr int kLast = 256 / kStep, kNodes = kLast + 1;
  const int above = (value + kStep - 1) / kStep;
  corners.lower = corners.lower * kNodes + value / kStep;
  corners.upper = corners.upper * kNodes + (last_node == LastNode::kWraps ? above % kLast : above);
}

constexpr int Mean(int a, int b) { return (a + b) >> 1; }

void StoreMeanRgb(const Corners& corners, uint8_t* dst, const RowArgs& args) {
  const uint8_t *lower = args.table + 3 * corners.lower, *upper = args.table + 3 * corners.upper;
  StoreRgb({Mean(lower[0], upper[0]), Mean(lower[1], upper[1]), Mean(lower[2], upper[2])}, dst, args);
}

void EmuCMYKToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  Corners corners;
  for (int i = 0; i < 4; ++i) Narrow<16>(corners, src[i]);
  StoreMeanRgb(corners, dst, args);
}

// The signed a and b have their first node at -128.
void EmuLabToRGBPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  Corners corners;
  Narrow<8>(corners, src[0]);
  Narrow<8>(corners, src[1] ^ 0x80, LastNode::kReached);
  Narrow<8>(corners, src[2] ^ 0x80, LastNode::kReached);
  StoreMeanRgb(corners, dst, args);
}

void EmuRGBToLabPixel(const uint8_t* src, uint8_t* dst, const RowArgs& args) {
  const Rgb rgb = LoadRgb(src, args);
  Corners corners;
  Narrow<8>(corners, rgb.r);
  Narrow<8>(corners, rgb.g);
  Narrow<8>(corners, rgb.b);
  const uint8_t *lower = args.table + 3 * corners.lower, *upper = args.table + 3 * corners.upper;
  dst[0] = static_cast<uint8_t>(Mean(lower[0], upper[0]));
  dst[1] = static_cast<uint8_t>(Mean(Signed(lower[1]), Signed(upper[1])));
  dst[2] = static_cast<uint8_t>(Mean(Signed(lower[2]), Signed(upper[2])));
}

}  // namespace

const Kernel EmuCMYKToRGB = PixelKernel<EmuCMYKToRGBPixel, 4, 3>("EmuCMYKToRGB");
const Kernel EmuRGBToLab = PixelKernel<EmuRGBToLabPixel, 3, 3>("EmuRGBToLab");
const Kernel EmuLabToRGB = PixelKernel<EmuLabToRGBPixel, 3, 3>("EmuLabToRGB");

}  // namespace qv
