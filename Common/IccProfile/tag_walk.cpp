#include "IccProfile/tag_walk.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/memory.h"
#include "base/readable.h"
#include "base/sizes.h"

namespace qv {
namespace {

template <typename T>
T Get(const uint8_t* structure, size_t at) {
  T value;
  std::memcpy(&value, structure + at, sizeof value);
  return value;
}
template <typename T>
void Set(uint8_t* structure, size_t at, T value) {
  std::memcpy(structure + at, &value, sizeof value);
}

uint64_t HostOrder(const uint8_t* from, size_t width) {  // both systems are little-endian
  uint64_t number = 0;
  std::memcpy(&number, from, width);
  return number;
}

// Between host order and file order; `from` may be `to`.
void ReverseEach(const uint8_t* from, uint8_t* to, size_t bytes, size_t width) {
  if (from != to && bytes != 0) std::memcpy(to, from, bytes);
  for (size_t i = 0; width > 1 && i < bytes; i += width) std::reverse(to + i, to + i + width);
}

constexpr size_t kHeadBytes = 8;

// Parts of a tag may share bytes, as texts of several languages do. This is how much more than there is they may come
// to.
constexpr size_t kMostSharedBytes = size_t{64} << 20;

}  // namespace

void TagWalk::Fail(Status status) {
  if (Ok() && !Releases()) status_ = status;
}

void TagWalk::Advance(const uint8_t* bytes, size_t count) {
  if (Writes() && bytes && count != 0) std::memcpy(room_ + cursor_, bytes, count);
  cursor_ += count;
  end_ = std::max(end_, cursor_);
}

void TagWalk::Numbers(size_t width, size_t at, size_t count) {
  if (!Ok() || Releases()) return;
  const size_t bytes = width * count;
  if (Decodes()) {
    reader_.Copy(tag_ + at, bytes);
    if (!reader_.Ok()) return Fail(kInvalidProfile);
    ReverseEach(tag_ + at, tag_ + at, bytes, width);
  } else if (Constructs()) {
    ReverseEach(source_ + at, tag_ + at, bytes, width);
  } else {
    Advance(tag_ + at, bytes);
  }
}

void TagWalk::Bytes(size_t at, size_t count) { Numbers(1, at, count); }

void TagWalk::Reserved(size_t width, size_t at, size_t count) {
  if (!Constructs()) Numbers(width, at, count);
}

uint64_t TagWalk::Unkept(size_t width, uint64_t written) {
  if (!Ok()) return 0;
  if (Decodes()) {
    written = reader_.Big(width);
    if (!reader_.Ok()) Fail(kInvalidProfile);
  } else {
    std::array<uint8_t, sizeof written> bytes{};
    StoreBigEndian(written, std::span(bytes).first(width));
    Advance(bytes.data(), width);
  }
  return written;
}

uint64_t TagWalk::NumberAt(const uint8_t* number, size_t width) const {
  if (Releases()) return 0;
  return Decodes() || Constructs() ? HostOrder(number, width) : BigEndian({number, width});
}
uint64_t TagWalk::Number(size_t width, size_t at) const {
  return NumberAt((Constructs() ? source_ : tag_) + at, width);
}
uint64_t TagWalk::NumberOfWhole(size_t width, size_t at) const {
  return NumberAt((Constructs() ? whole_source_ : whole_) + at, width);
}
uint64_t TagWalk::Element(size_t width, size_t at, size_t index) const {
  return Ok() && !Releases() ? NumberAt(Source(at) + index * width, width) : 0;
}

void TagWalk::SetNumber(size_t width, size_t at, uint64_t number) {
  if (Decodes()) std::memcpy(tag_ + at, &number, width);
  if (Constructs()) StoreBigEndian(number, {tag_ + at, width});
}

uint64_t TagWalk::HostNumber(size_t width, size_t at) const {
  return Releases() ? 0 : HostOrder((Constructs() ? source_ : tag_) + at, width);
}
void TagWalk::SetHostNumber(size_t width, size_t at, uint64_t number) {
  if (Decodes() || Constructs()) std::memcpy(tag_ + at, &number, width);
}

const uint8_t* TagWalk::Source(size_t at) const { return Get<const uint8_t*>(Constructs() ? source_ : tag_, at); }

uint8_t* TagWalk::AllocateAt(size_t at, uint64_t count, size_t width, size_t hidden) {
  uint8_t* array = NewArray<uint8_t>(Sum(Product(count, width), hidden)).release();
  Set(tag_, at, array);
  if (!array) Fail(kFailure);
  return array;
}

const uint8_t* TagWalk::ReadableSource(size_t at, uint64_t count, size_t width) {
  const uint8_t* from = Source(at);
  if (from && IsReadable(from, Product(count, width))) return from;
  Fail(kInvalidParameter);
  return nullptr;
}

void TagWalk::Array(size_t width, size_t at, uint64_t count, size_t hidden) {
  if (Releases()) {
    Release(Get<uint8_t*>(tag_, at));
    Set<uint8_t*>(tag_, at, nullptr);
    return;
  }
  if (!Ok()) return;
  const size_t bytes = Product(count, width);
  if (Decodes()) {
    if (!reader_.Has(count, width)) return Fail(kInvalidProfile);
    decoded_ += bytes;
    if (decoded_ > reader_.AreaBytes() + kMostSharedBytes) return Fail(kInvalidProfile);
    uint8_t* array = AllocateAt(at, count, width, hidden);
    if (!array) return;
    reader_.Copy(array, bytes);
    ReverseEach(array, array, bytes, width);
  } else if (Constructs()) {
    const uint8_t* from = ReadableSource(at, count, width);
    uint8_t* array = from ? AllocateAt(at, count, width, hidden) : nullptr;
    if (array) ReverseEach(from, array, bytes, width);
  } else {
    Advance(Source(at), bytes);
  }
}

void TagWalk::Records(size_t at, uint64_t count, size_t record_bytes, size_t least, Describe describe) {
  if (!Ok()) return;
  uint8_t* records = Get<uint8_t*>(tag_, at);
  const uint8_t* from = nullptr;
  if (Releases()) count = BytesOf(records) / record_bytes;
  if (Decodes() && !reader_.Has(count, least)) return Fail(kInvalidProfile);
  if (Constructs() && !(from = ReadableSource(at, count, record_bytes))) return;
  if ((Decodes() || Constructs()) && !(records = AllocateAt(at, count, record_bytes, 0))) return;
  uint8_t* const tag = tag_;
  const uint8_t* const source = source_;
  for (uint64_t i = 0; i < count && Ok(); ++i) {
    tag_ = records + i * record_bytes;
    source_ = from ? from + i * record_bytes : nullptr;
    describe(*this);
  }
  tag_ = tag;
  source_ = source;
  if (Releases()) Array(1, at, 0);
}

TagWalk::Slot TagWalk::OffsetSlot() {
  const size_t position = cursor_;
  return {position, static_cast<uint32_t>(Unkept(4, 0))};
}

void TagWalk::KeepFree(size_t bytes) { end_ = std::max(end_, cursor_ + bytes); }

size_t TagWalk::Enter(const Slot& slot) {
  const size_t back = Position();
  if (Decodes()) {
    reader_.Seek(slot.offset);
    if (!reader_.Ok()) Fail(kInvalidProfile);
  } else {
    cursor_ = (end_ + 3) / 4 * 4;
    if (Writes()) StoreBigEndian(cursor_, {room_ + slot.position, 4});
  }
  return back;
}

void TagWalk::Leave(size_t back) {
  if (Decodes()) {
    reader_.Seek(back);
  } else {
    cursor_ = back;
  }
}

void TagWalk::Align() {
  const size_t padding = (4 - Position() % 4) % 4;
  if (!Decodes()) Advance(nullptr, padding);
  if (Decodes() && Has(padding)) reader_.Seek(reader_.At() + padding);  // the last one may be lacking
}

Status DecodeTag(const TagCodec& codec, ByteReader reader, void* tag) {
  std::memset(tag, 0, codec.struct_size);
  TagWalk walk(TagWalk::Mode::kDecode, tag);
  walk.reader_ = reader;
  walk.Numbers(4, 0, 2);
  codec.describe(walk);
  if (!walk.Ok()) ReleaseTag(codec, tag);
  return walk.status_;
}

Status ConstructTag(const TagCodec& codec, uint32_t type, const void* source, void* copy) {
  alignas(std::max_align_t) uint8_t made[kLargestTagStructure] = {};
  StoreBigEndian(type, {made, 4});
  TagWalk walk(TagWalk::Mode::kConstruct, made);
  walk.source_ = walk.whole_source_ = static_cast<const uint8_t*>(source);
  codec.describe(walk);
  if (walk.Ok()) {
    std::memcpy(copy, made, codec.struct_size);
  } else {
    ReleaseTag(codec, made);
  }
  return walk.status_;
}

size_t EncodedBytes(const TagCodec& codec, void* copy) {
  TagWalk walk(TagWalk::Mode::kMeasure, copy);
  walk.Numbers(1, 0, kHeadBytes);
  codec.describe(walk);
  return walk.end_;
}

void EncodeTag(const TagCodec& codec, void* copy, uint8_t* room) {
  TagWalk walk(TagWalk::Mode::kWrite, copy);
  walk.room_ = room;
  walk.Numbers(1, 0, kHeadBytes);
  codec.describe(walk);
}

void ReleaseTag(const TagCodec& codec, void* tag) {
  TagWalk walk(TagWalk::Mode::kRelease, tag);
  codec.describe(walk);
}

}  // namespace qv
