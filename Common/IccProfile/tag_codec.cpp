#include "IccProfile/tag_codec.h"

#include <cstring>

#include "base/memory.h"
#include "base/readable.h"
#include "base/sizes.h"

namespace qv {
namespace {

// Structures of callers are packed and need not be aligned.
template <typename T>
T Get(const void* tag, size_t at) {
  T value;
  std::memcpy(&value, static_cast<const uint8_t*>(tag) + at, sizeof value);
  return value;
}
template <typename T>
void Set(void* tag, size_t at, T value) {
  std::memcpy(static_cast<uint8_t*>(tag) + at, &value, sizeof value);
}

void SetInFileOrder(void* tag, size_t at, uint32_t number) {
  StoreBigEndian(number, {static_cast<uint8_t*>(tag) + at, sizeof number});
}
uint32_t GetInFileOrder(const void* tag, size_t at) {
  return static_cast<uint32_t>(BigEndian({static_cast<const uint8_t*>(tag) + at, sizeof(uint32_t)}));
}

uint32_t CountInCopy(const Field& field, const void* copy) {
  return field.count_stays_in_host_order ? Get<uint32_t>(copy, field.count_at) : GetInFileOrder(copy, field.count_at);
}

uint8_t* AddArray(const Field& field, void* tag, size_t count) {
  uint8_t* array = NewArray<uint8_t>(Product(count, field.width)).release();
  Set(tag, field.at, array);
  return array;
}

// Between host order and file order; both systems are little-endian.
void ReverseEach(const uint8_t* from, uint8_t* to, size_t count, size_t width) {
  for (size_t i = 0; i < count * width; i += width) std::reverse_copy(from + i, from + i + width, to + i);
}

}  // namespace

Status DecodeTag(const TagCodec& codec, ByteReader reader, void* tag) {
  std::memset(tag, 0, codec.struct_size);
  Set(tag, 0, static_cast<uint32_t>(reader.Big(4)));
  Set(tag, 4, static_cast<uint32_t>(reader.Big(4)));
  if (!reader.Ok()) return kInvalidProfile;
  for (const Field& field : codec.fields) {
    const size_t count = reader.Left() / field.width;
    if (!reader.Has(count, field.width)) return kInvalidProfile;
    uint8_t* array = AddArray(field, tag, count);
    if (!array) return kFailure;
    Set(tag, field.count_at, static_cast<uint32_t>(count));
    reader.Copy(array, count * field.width);
    ReverseEach(array, array, count, field.width);
  }
  return kSuccess;
}

Status ConstructTag(const TagCodec& codec, uint32_t type, const void* source, void* copy) {
  alignas(std::max_align_t) uint8_t made[kLargestTagStructure] = {};
  SetInFileOrder(made, 0, type);
  for (const Field& field : codec.fields) {
    const auto* from = Get<const uint8_t*>(source, field.at);
    const auto count = Get<uint32_t>(source, field.count_at);
    Status status = kSuccess;
    if (!from || !IsReadable(from, Product(count, field.width))) status = kInvalidParameter;
    uint8_t* array = Ok(status) ? AddArray(field, made, count) : nullptr;
    if (Ok(status) && !array) status = kFailure;
    if (!Ok(status)) {
      ReleaseTag(codec, made);
      return status;
    }
    ReverseEach(from, array, count, field.width);
    if (field.count_stays_in_host_order) {
      Set(made, field.count_at, count);
    } else {
      SetInFileOrder(made, field.count_at, count);
    }
  }
  std::memcpy(copy, made, codec.struct_size);
  return kSuccess;
}

size_t EncodedBytes(const TagCodec& codec, const void* copy) {
  size_t bytes = kTagHeadBytes;
  for (const Field& field : codec.fields) bytes += size_t{CountInCopy(field, copy)} * field.width;
  return bytes;
}

void EncodeTag(const TagCodec& codec, const void* copy, uint8_t* to) {
  ByteWriter writer(to);
  writer.Copy(copy, kTagHeadBytes);
  for (const Field& field : codec.fields) {
    writer.Copy(Get<const uint8_t*>(copy, field.at), size_t{CountInCopy(field, copy)} * field.width);
  }
}

void ReleaseTag(const TagCodec& codec, void* tag) {
  for (const Field& field : codec.fields) {
    Release(Get<uint8_t*>(tag, field.at));
    Set<uint8_t*>(tag, field.at, nullptr);
  }
}

}  // namespace qv
