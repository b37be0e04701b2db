// The first directory of a TIFF file as it stands: entries are moved and never interpreted, so that rational numbers,
// private tags and sloppy texts stay what they are.
#pragma once

#include <cstdint>
#include <span>

#include "base/files.h"
#include "base/memory.h"
#include "base/status.h"

namespace qv {

class TiffDirectory {
 public:
  // kProfileData for what is no TIFF file or has no whole first directory.
  Status Read(File& file);

  // Writes the value behind the end of the file, there a copy of the directory with `tag` as its one entry of the type
  // UNDEFINED, or without it for no value, and has the header point to that.
  Status WriteWith(uint16_t tag, std::span<const uint8_t> value, File& file) const;

 private:
  size_t Word() const { return big_ ? 8 : 4; }
  size_t CountBytes() const { return big_ ? 8 : 2; }
  size_t EntryBytes() const { return 4 + 2 * Word(); }
  uint64_t Number(const uint8_t* from, size_t bytes) const;
  void Store(uint64_t number, uint8_t* to, size_t bytes) const;

  bool motorola_ = false, big_ = false;
  uint64_t count_ = 0;
  Owned<uint8_t[]> entries_;  // and the link to the next directory
};

}  // namespace qv
