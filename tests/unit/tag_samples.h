// A small tag of every decoded type, written by hand, and what its structure holds, field for field.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "Qvclr15x.h"

namespace qv_test {

using Bytes = std::vector<uint8_t>;

// "0A ff" are bytes, 'text' is ASCII, .3 is three zero bytes.
Bytes BytesFrom(std::string_view notation);

// Goes through a structure in host order, its copy in file order, and the tag that they come from; all three are told
// in the order of the tag's bytes, which is that of the packed structure too.
class Fields {
 public:
  Fields(const void* host, const void* file, Bytes tag)
      : tag_(std::move(tag)), host_(static_cast<const uint8_t*>(host)), file_(static_cast<const uint8_t*>(file)) {}

  uint64_t Number(size_t width, size_t count = 1);  // the last of them
  void Array(size_t width, size_t count);
  void Records(size_t count, size_t record_bytes, const std::function<void()>& describe,
               const std::function<void()>& describe_parts = {});
  void Reserved(size_t bytes);  // zeros in the copy, and in what is written
  void NotInTag(uint32_t number, bool copy_in_host_order = false);
  void Skip(size_t bytes) { position_ += bytes; }                 // of the tag: what no structure holds
  void Advance(size_t bytes) { host_ += bytes, file_ += bytes; }  // what has been told
  void Align() { position_ = (position_ + 3) / 4 * 4; }
  bool SkipNull();  // where an optional array is not there

  uint64_t Ahead(size_t width, size_t distance = 0) const;  // a number of the host's
  size_t Rest() const { return tag_.size() - position_; }
  const Bytes& Written() const { return tag_; }                              // the tag with its reserved bytes cleared
  const std::vector<const uint8_t*>& Pointers() const { return pointers_; }  // where the host has its arrays

 private:
  void Compare(const uint8_t* host, const uint8_t* file, size_t width, size_t count);

  Bytes tag_;
  const uint8_t *host_, *file_;
  size_t position_ = 0;
  std::vector<const uint8_t*> pointers_;
};

struct Sample {
  uint32_t type;
  Bytes tag;
  void (*describe)(Fields& fields);  // of what follows the head; null where less or more is written than was read
  bool fills_tag;                    // the tag's size tells how many elements there are
};
const std::vector<Sample>& Samples();

}  // namespace qv_test
