#include "reference/emulation_model.h"

#include <algorithm>
#include <cmath>

namespace qv_test {

EmulationModel::EmulationModel(size_t channels, int step, Signed side, const uint8_t* table)
    : step_(step), signed_target_(side == Signed::kTarget), table_(table), channels_(channels) {
  size_t weight = 1;
  for (size_t i = channels; i > 0; --i) {
    Channel& channel = channels_[i - 1];
    channel.is_signed = side == Signed::kSource && i > 1;
    channel.weight = weight;
    for (size_t byte = 0; byte < 256; ++byte) {
      channel.parts[byte] = PartOf(static_cast<uint8_t>(byte), channel.is_signed);
    }
    weight *= static_cast<size_t>(256 / step + 1);
  }
}

EmulationModel::Part EmulationModel::PartOf(uint8_t byte, bool is_signed) const {
  const double steps = (is_signed ? int{static_cast<int8_t>(byte)} + 128 : int{byte}) / static_cast<double>(step_);
  const int ceiling = static_cast<int>(std::ceil(steps)), floor = static_cast<int>(std::floor(steps));
  int upper, lower;  // coordinates of the corners
  if (is_signed) {
    upper = std::min(ceiling * step_ - 128, 127) + 128;
    lower = std::min(floor * step_ - 128, 127) + 128;
  } else {
    upper = (ceiling % 256) * step_ % 256;
    lower = (floor % 256) * step_;
    if (lower >= 256) lower = 255;
  }
  const auto node = [this](int at) { return static_cast<size_t>(std::ceil(at / static_cast<double>(step_))); };
  return {std::ceil(steps), node(upper), node(lower)};
}

// The nodes of the slower channels count in the coordinate of a faster one.
bool EmulationModel::IsOnNode(const uint8_t* src, size_t node) const {
  for (size_t i = 0; i < channels_.size(); ++i) {
    const double whole = std::floor(static_cast<double>(node) / static_cast<double>(channels_[i].weight));
    const auto corner = static_cast<uint8_t>(static_cast<int64_t>(whole * step_));
    const bool equal = channels_[i].is_signed ? static_cast<int8_t>(src[i]) == int{corner} - 128 : src[i] == corner;
    if (!equal) return false;
  }
  return true;
}

void EmulationModel::Convert(const uint8_t* src, uint8_t* dst) const {
  double above = 0;
  size_t upper = 0, lower = 0;
  for (size_t i = 0; i < channels_.size(); ++i) {
    const Part& part = channels_[i].parts[src[i]];
    above += part.ceiling * static_cast<double>(channels_[i].weight);
    upper += part.upper_at * channels_[i].weight;
    lower += part.lower_at * channels_[i].weight;
  }
  const auto node = static_cast<size_t>(above);
  if (IsOnNode(src, node)) {
    std::copy_n(table_ + 3 * node, 3, dst);
    return;
  }
  for (size_t i = 0; i < 3; ++i) {
    const uint8_t a = table_[3 * upper + i], b = table_[3 * lower + i];
    const bool is_signed = signed_target_ && i > 0;
    const int sum = is_signed ? static_cast<int8_t>(a) + static_cast<int8_t>(b) : a + b;
    dst[i] = static_cast<uint8_t>(sum >> 1);
  }
}

}  // namespace qv_test
