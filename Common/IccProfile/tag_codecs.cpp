#include "IccProfile/tag_codecs.h"

#include <algorithm>

#include "IccProfile/profile_record.h"

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

constexpr Field kRaw[] = {{1, offsetof(IccUnknownTagType, data), offsetof(IccUnknownTagType, dataSize), true}};
constexpr TagCodec kRawCodec = {0, sizeof(IccUnknownTagType), kRaw};

}  // namespace

const TagCodec* FindCodec(uint32_t /*type*/) { return nullptr; }

const TagCodec& RawCodec() { return kRawCodec; }

Status StatusOfTag(uint32_t signature, uint32_t type) {
  const bool registered = std::ranges::find(kRegistered, signature) != std::end(kRegistered);
  if (FindCodec(type)) return registered ? kSuccess : kPrivateTag;
  return registered ? kUnknownTagType : kPrivateTagUnknownType;
}

}  // namespace qv
