// Big-endian numbers, and the one way in which untrusted bytes are read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace qv {

constexpr uint64_t BigEndian(std::span<const uint8_t> bytes) {
  uint64_t number = 0;
  for (const uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

// The low bytes of the number, as many as there is room for.
constexpr void StoreBigEndian(uint64_t number, std::span<uint8_t> to) {
  for (size_t i = to.size(); i > 0; --i, number >>= 8) to[i - 1] = static_cast<uint8_t>(number);
}

// A cursor over a piece of a larger area. Nothing is read beyond the area; a read that would go there gives 0 and is
// remembered. The end of the piece itself only tells how much is left.
class ByteReader {
 public:
  explicit ByteReader(std::span<const uint8_t> bytes) : ByteReader(bytes, bytes.size()) {}
  ByteReader(std::span<const uint8_t> area_from_piece, size_t piece_bytes)
      : area_(area_from_piece), piece_bytes_(piece_bytes) {}

  bool Ok() const { return ok_; }
  size_t Left() const { return piece_bytes_ > at_ ? piece_bytes_ - at_ : 0; }  // of the piece
  bool Has(uint64_t count, size_t width) const { return count <= (area_.size() - at_) / width; }

  uint64_t Big(size_t width) {
    if (!Has(1, width)) {
      ok_ = false;
      return 0;
    }
    at_ += width;
    return BigEndian(area_.subspan(at_ - width, width));
  }
  void Copy(void* to, size_t bytes) {
    ok_ = ok_ && Has(bytes, 1);
    if (!ok_) return;
    if (bytes != 0) std::memcpy(to, &area_[at_], bytes);
    at_ += bytes;
  }
  size_t At() const { return at_; }
  size_t AreaBytes() const { return area_.size(); }
  void Seek(size_t at) {
    ok_ = ok_ && at <= area_.size();
    if (ok_) at_ = at;
  }

 private:
  std::span<const uint8_t> area_;
  size_t piece_bytes_;
  size_t at_ = 0;
  bool ok_ = true;
};

// A cursor over room that is large enough for what is written.
class ByteWriter {
 public:
  explicit ByteWriter(uint8_t* to) : to_(to) {}

  void Big(uint64_t number, size_t width) {
    StoreBigEndian(number, {to_, width});
    to_ += width;
  }
  void Copy(const void* from, size_t bytes) {
    if (bytes != 0) std::memcpy(to_, from, bytes);
    to_ += bytes;
  }

 private:
  uint8_t* to_;
};

}  // namespace qv
