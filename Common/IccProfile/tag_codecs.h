// The tag types that are decoded, the registered tag signatures, and what is told of them.
#pragma once

#include "IccProfile/tag_walk.h"

namespace qv {

// Null for a type that is not decoded.
const TagCodec* FindCodec(uint32_t type);
const TagCodec& RawCodec();
inline const TagCodec& CodecFor(uint32_t type) {
  const TagCodec* codec = FindCodec(type);
  return codec ? *codec : RawCodec();
}

// Of completed work: whether the signature is registered and the type decoded.
Status StatusOfTag(uint32_t signature, uint32_t type);

}  // namespace qv
