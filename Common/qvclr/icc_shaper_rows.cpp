// Rows of pixels by curves and a matrix.
#include <cstring>

#include "qvclr/icc_shaper.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "qvclr/icc_shaper_rows.cpp"
#include <hwy/foreach_target.h>  // compiles the part below once per instruction set

#include "qvclr/kernels/matrix-inl.h"
#include "qvclr/kernels/words-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qv::HWY_NAMESPACE {
namespace {

#if QV_HAS_VECTORS
HWY_INLINE RgbPlanes LoadRgb(const IccShaper& shaper, const uint8_t* src) {
  return LoadRgbPlanes(src, {.rgb_first = !shaper.swaps_input});
}

void ConvertChannels(const IccShaper& shaper, const uint8_t* src, uint8_t* dst) {
  const RgbPlanes in = LoadRgb(shaper, src);
  StoreRgbPlanes({LookUp(shaper.bytes[0], in.r), LookUp(shaper.bytes[1], in.g), LookUp(shaper.bytes[2], in.b)}, dst,
                 {.rgb_first = !shaper.swaps_output});
}

// Of a block, as WordAt has it.
struct Light {
  alignas(64) uint16_t of[3][kBlock];
  HWY_INLINE void Store(size_t channel, const WordPlane& words) {
    const auto clamped = [](I16Vector light) HWY_ATTR {
      return hn::BitCast(U16(), hn::Clamp(light, hn::Zero(I16()), hn::Set(I16(), int16_t{IccShaper::kOne})));
    };
    hn::Store(clamped(words.lower), U16(), of[channel]);
    hn::Store(clamped(words.upper), U16(), of[channel] + kBlock / 2);
  }
};

HWY_INLINE void FindLight(const IccShaper& shaper, const RgbPlanes& in, Light& light) {
  const auto linear = [&](size_t c, ByteVector bytes) HWY_ATTR {
    return WordsOf(LookUp(shaper.linear_low[c], bytes), LookUp(shaper.linear_high[c], bytes));
  };
  const Words red = linear(0, in.r), green = linear(1, in.g), blue = linear(2, in.b);
  const auto one = hn::Set(U16(), uint16_t{1});
  const auto row = [&](size_t c, const Pairs& pairs) HWY_ATTR {
    const auto& of = shaper.matrix[c];
    const auto first = hn::Set(I32(), forms::PairOfWeights(of[0], of[1])),
               second = hn::Set(I32(), forms::PairOfWeights(of[2], IccShaper::kOne / 2));
    return hn::ShiftRight<14>(AddProducts(AddProducts(hn::Zero(I32()), pairs.first, first), pairs.second, second));
  };
  const WordPlanes rows = ByQuarters([&](auto quarter) HWY_ATTR {
    constexpr size_t kQuarter = decltype(quarter)::value;
    const Pairs pairs{PairsOfWords<kQuarter>(red, green), PairsOfWords<kQuarter>(blue, {one, one})};
    return Three{row(0, pairs), row(1, pairs), row(2, pairs)};
  });
  light.Store(0, rows.first);
  light.Store(1, rows.middle);
  light.Store(2, rows.last);
}

void ConvertByMatrix(const IccShaper& shaper, const uint8_t* src, uint8_t* dst) {
  Light light;
  FindLight(shaper, LoadRgb(shaper, src), light);
  const auto encoded = [&](size_t c) { return shaper.encoded[shaper.encoding[c]].data(); };
  const uint8_t *red = encoded(0), *green = encoded(1), *blue = encoded(2);
  const int of_red = shaper.swaps_output ? 16 : 0, of_blue = 16 - of_red;
  uint8_t pixels[3 * kBlock + 1];  // each pixel's fourth byte is the next one's first
  for (size_t i = 0; i < kBlock; ++i) {
    const size_t at = WordAt(i);
    const uint32_t pixel = static_cast<uint32_t>(red[light.of[0][at]]) << of_red |
                           static_cast<uint32_t>(green[light.of[1][at]]) << 8 |
                           static_cast<uint32_t>(blue[light.of[2][at]]) << of_blue;
    std::memcpy(pixels + 3 * i, &pixel, sizeof pixel);
  }
  std::memcpy(dst, pixels, 3 * kBlock);
}

void Row(const IccShaper& shaper, const uint8_t* src, uint8_t* dst, size_t pixels) {
  const auto convert = shaper.kind == IccShaper::Kind::kChannels ? ConvertChannels : ConvertByMatrix;
  for (; pixels >= kBlock; pixels -= kBlock, src += 3 * kBlock, dst += 3 * kBlock) convert(shaper, src, dst);
  if (pixels == 0) return;
  uint8_t in[3 * kBlock] = {}, out[3 * kBlock];
  std::memcpy(in, src, 3 * pixels);
  convert(shaper, in, out);
  std::memcpy(dst, out, 3 * pixels);
}
#else
void Row(const IccShaper& shaper, const uint8_t* src, uint8_t* dst, size_t pixels) {
  for (; pixels > 0; --pixels, src += 3, dst += 3) ShaperPixel(shaper, src, dst);
}
#endif

}  // namespace
}  // namespace qv::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qv {
namespace {
HWY_EXPORT(Row);
}  // namespace

void ShaperRow(const IccShaper& shaper, const uint8_t* src, uint8_t* dst, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(Row)(shaper, src, dst, pixels);
}

}  // namespace qv
#endif
