// Colorants and named colours.
#include "IccProfile/tags/tags.h"
#include "Qvclr15x.h"

namespace qv {
namespace {

constexpr size_t kNameAndPcsBytes = 32 + 3 * 2;

void DescribeColorant(TagWalk& walk) {
  using T = IccColorant;
  walk.Bytes(QV_AT(name), sizeof T::name);
  walk.Numbers(2, QV_AT(pcs), 3);
}

void DescribeNamedColor(TagWalk& walk) {
  using T = IccNamedColor;
  walk.Bytes(QV_AT(name), sizeof T::name);
  walk.Numbers(2, QV_AT(pcs), 3);
  walk.Array(2, QV_AT(device), walk.NumberOfWhole(4, offsetof(IccNamedColorsTagType, deviceChannels)));
}

}  // namespace

void DescribeChromaticity(TagWalk& walk) {
  using T = IccChromaticityTagType;
  walk.Numbers(2, QV_AT(channelCount));
  walk.Numbers(2, QV_AT(colorantType));
  walk.Array(4, QV_AT(coordinates), 2 * walk.Number(2, QV_AT(channelCount)));
}

void DescribeColorantOrder(TagWalk& walk) {
  using T = IccColorantOrderTagType;
  walk.Numbers(4, QV_AT(colorantCount));
  walk.Array(1, QV_AT(order), walk.Number(4, QV_AT(colorantCount)));
}

void DescribeColorantTable(TagWalk& walk) {
  using T = IccColorantTableTagType;
  walk.Numbers(4, QV_AT(colorantCount));
  walk.Records(QV_AT(colorants), walk.Number(4, QV_AT(colorantCount)), sizeof(IccColorant), kNameAndPcsBytes,
               DescribeColorant);
}

void DescribeNamedColors(TagWalk& walk) {
  using T = IccNamedColorsTagType;
  walk.Numbers(4, QV_AT(vendorFlags));
  walk.Numbers(4, QV_AT(colorCount));
  walk.Numbers(4, QV_AT(deviceChannels));
  walk.Bytes(QV_AT(prefix), sizeof T::prefix);
  walk.Bytes(QV_AT(suffix), sizeof T::suffix);
  walk.Records(QV_AT(colors), walk.Number(4, QV_AT(colorCount)), sizeof(IccNamedColor), kNameAndPcsBytes,
               DescribeNamedColor);
}

}  // namespace qv
