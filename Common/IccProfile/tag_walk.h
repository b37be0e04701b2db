// One walk over the fields of a tag type, for five purposes. A type is one function that names its fields in the order
// of the tag's bytes; what happens to each depends on the walk:
//   decode     the tag's bytes -> a structure in host order
//   construct  a structure in host order -> a deep copy in file order
//   measure    of such a copy: the size of its tag
//   write      such a copy -> the tag's bytes
//   release    what a structure of either order owns
// After a failure nothing more happens in a walk.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "base/status.h"

namespace qv {

class TagWalk;
using Describe = void (*)(TagWalk& walk);

struct TagCodec {
  uint32_t type;         // 0: any
  uint32_t struct_size;  // at most kLargestTagStructure
  Describe describe;     // of what follows the two words of the head
};

inline constexpr size_t kLargestTagStructure = 128;

// Fills the structure; after a failure it owns nothing. kInvalidProfile when the bytes end too early; kFailure
// without memory.
Status DecodeTag(const TagCodec& codec, ByteReader reader, void* tag);
// After a failure the copy owns nothing. kInvalidParameter for an array that is null or not readable; kFailure without
// memory.
Status ConstructTag(const TagCodec& codec, uint32_t type, const void* source, void* copy);
// Of a copy in file order: its size in a tag, without padding, and its bytes; the room must be zero-filled.
size_t EncodedBytes(const TagCodec& codec, void* copy);
void EncodeTag(const TagCodec& codec, void* copy, uint8_t* room);
void ReleaseTag(const TagCodec& codec, void* tag);

// Fields are told by their places in the structure. Structures of callers are packed and need not be aligned.
class TagWalk {
 public:
  bool Decodes() const { return mode_ == Mode::kDecode; }
  bool Constructs() const { return mode_ == Mode::kConstruct; }
  bool Releases() const { return mode_ == Mode::kRelease; }
  bool Ok() const { return qv::Ok(status_); }
  void Fail(Status status);  // the first one counts; a release does not fail

  // A number or several, in the structure itself.
  void Numbers(size_t width, size_t at, size_t count = 1);
  // Bytes that are the same in both orders.
  void Bytes(size_t at, size_t count);
  // The same, but a copy has zeros in its place.
  void Reserved(size_t width, size_t at, size_t count = 1);
  // A number of the tag that the structure does not carry: `written` is what a writer puts there. Returns what is
  // there.
  uint64_t Unkept(size_t width, uint64_t written);

  // The value of a number, whatever the order that it stands in; 0 in a release.
  uint64_t Number(size_t width, size_t at) const;
  // For what a structure counts and a tag does not.
  void SetNumber(size_t width, size_t at, uint64_t number);
  // The same for numbers that stay in host order in a copy too.
  uint64_t HostNumber(size_t width, size_t at) const;
  void SetHostNumber(size_t width, size_t at, uint64_t number);

  // An array that the structure owns, with the pointer at `at` and `hidden` zero bytes behind it. In a release, its
  // count is of no account.
  void Array(size_t width, size_t at, uint64_t count, size_t hidden = 0);
  // The same of records, whose fields `describe` names by their places in a record; in a tag each has `least` bytes at
  // its place, or more.
  void Records(size_t at, uint64_t count, size_t record_bytes, size_t least, Describe describe);
  // Within Records: a number of the structure that the records stand in.
  uint64_t NumberOfWhole(size_t width, size_t at) const;

  // When decoding: how many elements fill the rest of the tag, whether so many bytes are there, the next number.
  size_t CountOfRest(size_t width) const { return reader_.Left() / width; }
  bool Has(size_t bytes) const { return reader_.Has(bytes, 1); }
  const ByteReader& Reader() const { return reader_; }

  // The array of the structure that is read from, and a number in such an array.
  const uint8_t* Source(size_t at) const;
  uint64_t Element(size_t width, size_t at, size_t index) const;

  // Parts of a tag that it reaches by an offset from its begin. A writer puts a part on a multiple of four, behind all
  // that has been written or kept free. An optional part that is not there has an offset of 0, and a null pointer at
  // `at`.
  struct Slot {
    size_t position;  // of the offset in the tag, when writing
    uint32_t offset;  // when decoding
  };
  Slot OffsetSlot();
  void KeepFree(size_t bytes);  // behind the current position
  template <typename Describer>
  void Part(const Slot& slot, Describer&& describe) {
    if (!Ok()) return;
    const size_t back = Enter(slot);
    describe();
    Leave(back);
  }
  template <typename Describer>
  void OptionalPart(const Slot& slot, size_t at, Describer&& describe) {
    const bool there = Decodes() ? slot.offset != 0 : Releases() || Source(at) != nullptr;
    if (there) Part(slot, describe);
  }
  void Align();  // to a multiple of four from the begin of the tag

 private:
  friend Status DecodeTag(const TagCodec& codec, ByteReader reader, void* tag);
  friend Status ConstructTag(const TagCodec& codec, uint32_t type, const void* source, void* copy);
  friend size_t EncodedBytes(const TagCodec& codec, void* copy);
  friend void EncodeTag(const TagCodec& codec, void* copy, uint8_t* room);
  friend void ReleaseTag(const TagCodec& codec, void* tag);

  enum class Mode : uint8_t { kDecode, kConstruct, kMeasure, kWrite, kRelease };
  TagWalk(Mode mode, void* tag) : mode_(mode), tag_(static_cast<uint8_t*>(tag)), whole_(tag_) {}

  bool Writes() const { return mode_ == Mode::kWrite; }
  void Advance(const uint8_t* bytes, size_t count);
  uint8_t* AllocateAt(size_t at, uint64_t count, size_t width, size_t hidden);
  const uint8_t* ReadableSource(size_t at, uint64_t count, size_t width);
  uint64_t NumberAt(const uint8_t* number, size_t width) const;
  size_t Position() const { return Decodes() ? reader_.At() : cursor_; }
  size_t Enter(const Slot& slot);
  void Leave(size_t back);

  Mode mode_;
  Status status_ = kSuccess;
  uint8_t* tag_;                     // the structure, or a record of it
  const uint8_t* source_ = nullptr;  // what is copied, or a record of it
  uint8_t* whole_;
  const uint8_t* whole_source_ = nullptr;
  ByteReader reader_{{}};
  size_t decoded_ = 0;  // bytes of arrays
  uint8_t* room_ = nullptr;
  size_t cursor_ = 0, end_ = 0;  // of what is measured or written
};

}  // namespace qv
