#include "reference/cmyk_model.h"

#include <algorithm>
#include <cmath>

#include "reference/exact_power.h"

namespace qv_test {
namespace {

// As x86 does it: what does not fit is the integer-indefinite value.
int32_t Truncate(double value) {
  const double whole = std::trunc(value);
  return whole >= INT32_MIN && whole <= INT32_MAX ? static_cast<int32_t>(whole) : INT32_MIN;
}

uint8_t LowByte(int64_t value) { return static_cast<uint8_t>(value & 0xff); }

}  // namespace

CmykModel::CmykModel(int32_t param) {
  std::array<double, 256> squares{};
  for (size_t i = 0; i < 256; ++i) {
    squares[i] = ExactPower(static_cast<double>(i) / 255, 2);
    grey_weight_[i] = Truncate(squares[i] * 256);
  }
  const double base = param / 1000.0, fifth_power = ExactPower(base, 5);
  for (size_t mn = 0; mn < 256; ++mn) {
    const auto smallest = static_cast<double>(mn);
    black_[mn] = Truncate(smallest * base);
    const double a = smallest / 255 * fifth_power;
    for (size_t mx = mn; mx < 256; ++mx) removal_[mn][mx] = Truncate(a * squares[mn - mx + 255] * 255);
  }
  factor_ = static_cast<int16_t>(static_cast<uint32_t>(Truncate(ExactPower(base, 4) * 256)));
}

void CmykModel::FromRgb(const uint8_t* rgb, uint8_t* cmyk) const {
  const int c = 255 - rgb[0], m = 255 - rgb[1], y = 255 - rgb[2];
  const auto mn = static_cast<size_t>(std::min(c, std::min(m, y)));
  const int64_t ucr = removal_[mn][static_cast<size_t>(std::max(c, std::max(m, y)))];
  cmyk[0] = LowByte(c - ucr);
  cmyk[1] = LowByte(m - ucr);
  cmyk[2] = LowByte(y - ucr);
  cmyk[3] = LowByte(black_[mn]);
}

void CmykModel::ToRgb(const uint8_t* cmyk, uint8_t* rgb) const {
  const int c = cmyk[0], m = cmyk[1], y = cmyk[2];
  const int mn = std::min(c, std::min(m, y)), mx = std::max(c, std::max(m, y));
  const int32_t grey = cmyk[3] * grey_weight_[static_cast<size_t>(mn - mx + 255)] >> 8;
  const int32_t k = std::min(grey * factor_, 255 - mx);
  rgb[0] = LowByte(255 - c - k);
  rgb[1] = LowByte(255 - m - k);
  rgb[2] = LowByte(255 - y - k);
}

}  // namespace qv_test
