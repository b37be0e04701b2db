#include "IccProfile/tag_codecs.h"

#include <algorithm>

#include "IccProfile/profile_record.h"
#include "IccProfile/tags/tags.h"

namespace qv {
namespace {

constexpr uint32_t kRegistered[] = {
    Signature("A2B0"), Signature("A2B1"), Signature("A2B2"), Signature("B2A0"), Signature("B2A1"), Signature("B2A2"),
    Signature("bXYZ"), Signature("bTRC"), Signature("bkpt"), Signature("calt"), Signature("chad"), Signature("chrm"),
    Signature("clot"), Signature("clro"), Signature("clrt"), Signature("cprt"), Signature("desc"), Signature("dmdd"),
    Signature("dmnd"), Signature("gamt"), Signature("gTRC"), Signature("gXYZ"), Signature("kTRC"), Signature("lumi"),
    Signature("meas"), Signature("ncl2"), Signature("pre0"), Signature("pre1"), Signature("pre2"), Signature("pseq"),
    Signature("resp"), Signature("rTRC"), Signature("rXYZ"), Signature("targ"), Signature("tech"), Signature("view"),
    Signature("vued"), Signature("wtpt")};

constexpr TagCodec kRawCodec = {0, sizeof(IccUnknownTagType), DescribeRaw};

template <typename Structure>
constexpr TagCodec Codec(const char (&type)[5], Describe describe) {
  static_assert(sizeof(Structure) <= kLargestTagStructure);
  return {Signature(type), sizeof(Structure), describe};
}
constexpr TagCodec kCodecs[] = {Codec<IccNumberArrayTagType>("XYZ ", DescribeNumberArray<4, 3>),
                                Codec<IccChromaticityTagType>("chrm", DescribeChromaticity),
                                Codec<IccColorantOrderTagType>("clro", DescribeColorantOrder),
                                Codec<IccColorantTableTagType>("clrt", DescribeColorantTable),
                                Codec<IccCurveTagType>("curv", DescribeCurve),
                                Codec<IccDataTagType>("data", DescribeData),
                                Codec<IccDateTimeTagType>("dtim", DescribeDateTime),
                                Codec<IccLutAToBTagType>("mAB ", DescribeLutAToB),
                                Codec<IccLutAToBTagType>("mBA ", DescribeLutBToA),
                                Codec<IccMeasurementTagType>("meas", DescribeMeasurement),
                                Codec<IccLutTagType>("mft1", DescribeLut<1>),
                                Codec<IccLutTagType>("mft2", DescribeLut<2>),
                                Codec<IccMultiLocalizedTagType>("mluc", DescribeMultiLocalized),
                                Codec<IccNamedColorsTagType>("ncl2", DescribeNamedColors),
                                Codec<IccParametricCurveTagType>("para", DescribeParametricCurve),
                                Codec<IccProfileSequenceTagType>("pseq", DescribeProfileSequence),
                                Codec<IccResponseCurveSetTagType>("rcs2", DescribeResponseCurves),
                                Codec<IccNumberArrayTagType>("sf32", DescribeNumberArray<4, 1>),
                                Codec<IccSignatureTagType>("sig ", DescribeSignature),
                                Codec<IccTextTagType>("text", DescribeText),
                                Codec<IccNumberArrayTagType>("uf32", DescribeNumberArray<4, 1>),
                                Codec<IccNumberArrayTagType>("ui08", DescribeNumberArray<1, 1>),
                                Codec<IccNumberArrayTagType>("ui16", DescribeNumberArray<2, 1>),
                                Codec<IccNumberArrayTagType>("ui32", DescribeNumberArray<4, 1>),
                                Codec<IccNumberArrayTagType>("ui64", DescribeNumberArray<8, 1>),
                                Codec<IccViewingConditionsTagType>("view", DescribeViewingConditions)};
static_assert(std::ranges::is_sorted(kCodecs, {}, &TagCodec::type));

}  // namespace

const TagCodec* FindCodec(uint32_t type) {
  const auto* codec = std::ranges::lower_bound(kCodecs, type, {}, &TagCodec::type);
  return codec != std::end(kCodecs) && codec->type == type ? codec : nullptr;
}

const TagCodec& RawCodec() { return kRawCodec; }

Status StatusOfTag(uint32_t signature, uint32_t type) {
  const bool registered = std::ranges::find(kRegistered, signature) != std::end(kRegistered);
  if (FindCodec(type)) return registered ? kSuccess : kPrivateTag;
  return registered ? kUnknownTagType : kPrivateTagUnknownType;
}

}  // namespace qv
