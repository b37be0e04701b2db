// The formulas of the swaps, CS_CMY and CS_CMYK, against facts worked out by hand and against slow models for every
// input that there is.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <future>
#include <span>
#include <string>
#include <vector>

#include "qvclr/kernels/kernels.h"
#include "reference/cmyk_model.h"

namespace {
using namespace qv;
using qv_test::CmykModel;
using Bytes = std::vector<uint8_t>;
using Pixel = std::array<uint8_t, 4>;

struct Formula {
  const Kernel* kernel;
  enum : uint8_t { kSource, kTarget, kBoth } rgb_side;  // kBoth: the byte order changes nothing
  void (*model)(const CmykModel& cmyk, const uint8_t* src, uint8_t* dst);
};

void Reverse(const CmykModel&, const uint8_t* src, uint8_t* dst) { std::reverse_copy(src, src + 3, dst); }
void Complement(const CmykModel&, const uint8_t* src, uint8_t* dst) {
  std::transform(src, src + 3, dst, [](uint8_t x) { return static_cast<uint8_t>(255 - x); });
}
const Formula kPlain[] = {{&RGBToBGR, Formula::kBoth, Reverse},
                          {&BGRToRGB, Formula::kBoth, Reverse},
                          {&RGBToCMY, Formula::kSource, Complement},
                          {&CMYToRGB, Formula::kTarget, Complement}};
const Formula kBlack[] = {
    {&RGBToCMYK, Formula::kSource, [](const CmykModel& cmyk, auto* src, auto* dst) { cmyk.FromRgb(src, dst); }},
    {&CMYKToRGB, Formula::kTarget, [](const CmykModel& cmyk, auto* src, auto* dst) { cmyk.ToRgb(src, dst); }}};

constexpr size_t kWidth = 65536;

// All values of the first three bytes, the fourth running along.
Pixel EveryPixel(size_t row, size_t x) {
  return {uint8_t(row), uint8_t(x / 256), uint8_t(x), uint8_t(row + 3 * (x / 256) + 5 * x)};
}
// All values of the fourth byte, for 16 values of each other one.
Pixel SampledPixel(size_t row, size_t x) {
  return {uint8_t(row * 17), uint8_t(x / 4096 * 17), uint8_t(x / 256 % 16 * 17), uint8_t(x)};
}

Bytes EndsSwapped(Bytes rgb) {
  for (size_t i = 0; i < rgb.size(); i += 3) std::swap(rgb[i], rgb[i + 2]);
  return rgb;
}

// Empty when kernel and model agree for all parameters in both byte orders.
template <Pixel (*kPixel)(size_t, size_t)>
std::string Difference(const Formula& formula, const std::vector<int32_t>& params, size_t from, size_t to) {
  const Kernel& kernel = *formula.kernel;
  const size_t src_bytes = kernel.src_bytes, dst_bytes = kernel.dst_bytes;
  const std::vector<CmykModel> models(params.begin(), params.end());
  Bytes src(kWidth * src_bytes), dst(kWidth * dst_bytes), expected(dst.size());
  for (size_t row = from; row < to; ++row) {
    for (size_t x = 0; x < kWidth; ++x) std::ranges::copy_n(kPixel(row, x).begin(), src_bytes, &src[x * src_bytes]);
    const Bytes swapped = formula.rgb_side == Formula::kSource ? EndsSwapped(src) : src;
    for (size_t i = 0; i < params.size(); ++i) {
      for (size_t x = 0; x < kWidth; ++x) formula.model(models[i], &src[x * src_bytes], &expected[x * dst_bytes]);
      for (const bool rgb_first : {true, false}) {
        if (!rgb_first && formula.rgb_side == Formula::kTarget) expected = EndsSwapped(std::move(expected));
        RowArgs args{.rgb_first = rgb_first, .black_param = params[i]};
        if (kernel.prepare) kernel.prepare(args);
        if (!Ok(kernel.row((rgb_first ? src : swapped).data(), dst.data(), kWidth, args))) return "refused";
        if (dst == expected) continue;
        const auto at = static_cast<size_t>(std::ranges::mismatch(dst, expected).in1 - dst.begin());
        const Pixel pixel = kPixel(row, at / dst_bytes);
        return kernel.name + std::string(rgb_first ? ", R first, " : ", B first, ") + std::to_string(params[i]) + ": " +
               testing::PrintToString(std::vector<int>(pixel.begin(), pixel.end())) + ", byte " +
               std::to_string(at % dst_bytes) + " is " + std::to_string(dst[at]);
      }
    }
  }
  return "";
}

void ExpectModelForEveryInput(std::span<const Formula> formulas, const std::vector<int32_t>& params) {
  for (const Formula& formula : formulas) {
    auto half = std::async(std::launch::async, [&] { return Difference<EveryPixel>(formula, params, 0, 128); });
    EXPECT_EQ(Difference<EveryPixel>(formula, params, 128, 256), "");
    EXPECT_EQ(half.get(), "");
  }
}

TEST(Formula, OfSwapsAndComplementsForEveryInput) { ExpectModelForEveryInput(kPlain, {175}); }

TEST(Formula, OfCmykForEveryInput) { ExpectModelForEveryInput(kBlack, {175, 0, 500, 1000, 3000, -1}); }

TEST(Formula, OfCmykForEveryBlackAndOddParameters) {
  // 3500: a negative factor of grey. 24500: some removals leave the 32-bit range. The extremes: nearly all do.
  for (const Formula& formula : kBlack) {
    EXPECT_EQ(Difference<SampledPixel>(formula, {175, 500, 1000, -1000, 3500, 24500, INT32_MAX, INT32_MIN}, 0, 16), "");
  }
}

TEST(Formula, OfCmykGivesWhatIsWorkedOutByHand) {
  struct Fact {
    const char* why;
    const Kernel* kernel;
    int32_t param;
    Pixel src, dst;
  };
  const Fact kFacts[] = {
      {"17.5 % of the smallest complement, truncated, is black", &RGBToCMYK, 175, {0, 0, 0}, {255, 255, 255, 44}},
      {"white takes no ink", &RGBToCMYK, 175, {255, 255, 255}, {0, 0, 0, 0}},
      {"black takes the place of all ink", &RGBToCMYK, 1000, {0, 0, 0}, {0, 0, 0, 255}},
      {"255 - 61965 and 765, low bytes", &RGBToCMYK, 3000, {0, 0, 0}, {242, 242, 242, 253}},
      {"0.175^4 is below 1/256", &CMYKToRGB, 175, {10, 20, 30, 255}, {245, 235, 225}},
      {"black stops at the largest ink", &CMYKToRGB, 1000, {100, 100, 100, 50}, {0, 0, 0}},
      {"0.25^4 is 1/256", &CMYKToRGB, 250, {0, 0, 0, 10}, {245, 245, 245}},
      {"a quarter of the black where half is grey", &CMYKToRGB, 250, {0, 127, 0, 40}, {245, 118, 245}},
  };
  for (const Fact& fact : kFacts) {
    RowArgs args{.black_param = fact.param};
    fact.kernel->prepare(args);
    Pixel dst{};
    ASSERT_EQ(fact.kernel->row(fact.src.data(), dst.data(), 1, args), kSuccess);
    EXPECT_EQ(dst, fact.dst) << fact.why;
  }
}

}  // namespace
