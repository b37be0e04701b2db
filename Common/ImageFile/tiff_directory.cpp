#include "ImageFile/tiff_directory.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"

namespace qv {
namespace {

constexpr uint16_t kTypeUndefined = 7, kBigVersion = 43;
constexpr uint64_t kMostEntries = 4096;  // as many as libtiff takes

bool ReadAt(File& file, uint64_t at, uint8_t* bytes, size_t count) {
  size_t taken = 0;
  return at <= INT64_MAX && file.Seek(static_cast<int64_t>(at), Origin::kStart) && file.Read(bytes, count, &taken) &&
         taken == count;
}

}  // namespace

uint64_t TiffDirectory::Number(const uint8_t* from, size_t bytes) const {
  uint8_t ordered[8];
  std::copy_n(from, bytes, ordered);
  if (!motorola_) std::reverse(ordered, ordered + bytes);
  return BigEndian({ordered, bytes});
}

void TiffDirectory::Store(uint64_t number, uint8_t* to, size_t bytes) const {
  StoreBigEndian(number, {to, bytes});
  if (!motorola_) std::reverse(to, to + bytes);
}

Status TiffDirectory::Read(File& file) {
  uint8_t head[16], count[8];
  if (!ReadAt(file, 0, head, 8)) return kProfileData;
  motorola_ = head[0] == 'M';
  big_ = Number(head + 2, 2) == kBigVersion;
  if (big_ && !ReadAt(file, 8, head + 8, 8)) return kProfileData;
  const uint64_t at = Number(head + Word(), Word());
  if (!ReadAt(file, at, count, CountBytes())) return kProfileData;
  count_ = Number(count, CountBytes());
  if (count_ > kMostEntries) return kProfileData;
  const size_t bytes = count_ * EntryBytes() + Word();
  entries_ = NewArray<uint8_t>(bytes);
  if (!entries_) return kFileWrite;
  return ReadAt(file, at + CountBytes(), entries_.get(), bytes) ? kSuccess : kProfileData;
}

Status TiffDirectory::WriteWith(uint16_t tag, std::span<const uint8_t> value, File& file) const {
  const size_t room = CountBytes() + (count_ + 1) * EntryBytes() + Word();
  const auto made = NewArray<uint8_t>(room);
  int64_t end = 0;
  if (!made || !file.Seek(0, Origin::kEnd, &end)) return kFileWrite;
  const bool outside = value.size() > Word();
  const uint64_t value_at = static_cast<uint64_t>(end + end % 2), value_bytes = outside ? value.size() : 0;
  const uint64_t at = value_at + value_bytes + value_bytes % 2;
  if (!big_ && at + room > UINT32_MAX) return kFileWrite;

  uint8_t* to = made.get() + CountBytes();
  bool wanted = !value.empty();
  const auto add_entry = [&] {
    Store(tag, to, 2);
    Store(kTypeUndefined, to + 2, 2);
    Store(value.size(), to + 4, Word());
    uint8_t* const field = to + 4 + Word();
    outside ? Store(value_at, field, Word()) : static_cast<void>(std::ranges::copy(value, field));
    to += EntryBytes();
    wanted = false;
  };
  const uint8_t* from = entries_.get();
  for (uint64_t i = 0; i < count_; ++i, from += EntryBytes()) {  // in the order of the tags
    const uint64_t other = Number(from, 2);
    if (wanted && other > tag) add_entry();
    if (other != tag) to = std::copy_n(from, EntryBytes(), to);
  }
  if (wanted) add_entry();
  const auto bytes_of_entries = static_cast<size_t>(to - made.get()) - CountBytes();
  Store(bytes_of_entries / EntryBytes(), made.get(), CountBytes());
  to = std::copy_n(from, Word(), to);

  constexpr uint8_t kPadding = 0;
  uint8_t link[8];
  Store(at, link, Word());
  const bool written = file.Write(&kPadding, end % 2) && file.Write(value.data(), value_bytes) &&
                       file.Write(&kPadding, value_bytes % 2) &&
                       file.Write(made.get(), static_cast<size_t>(to - made.get())) &&
                       file.Seek(static_cast<int64_t>(Word()), Origin::kStart) && file.Write(link, Word());
  return written ? kSuccess : kFileWrite;
}

}  // namespace qv
