// A file taken for an ICC profile. Its bytes are not trusted: they are read through NumberAt() and Part() only.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "profile_record.h"

namespace client {

uint32_t BigEndian(std::span<const uint8_t> bytes);
void StoreBigEndian(uint32_t number, std::span<uint8_t> to);

class ProfileFile {
 public:
  // Fails for a file that cannot be read or has no room for header and number of tags.
  explicit ProfileFile(const std::string& path);

  const std::string& path() const { return path_; }
  const std::vector<uint8_t>& bytes() const { return bytes_; }
  uint64_t size() const { return bytes_.size(); }

  // Nothing where the file ends before.
  std::optional<uint32_t> NumberAt(uint64_t offset) const;
  std::span<const uint8_t> Part(uint64_t begin, uint64_t end) const;  // as far as the file reaches

  IccHeader Header() const;

  // Fails for a profile that cannot be edited: of an older version, or of another size than it tells.
  std::vector<uint8_t> ForEditing() const;

 private:
  std::string path_;
  std::vector<uint8_t> bytes_;
};

// An existing file is replaced when all is written.
void WriteProfile(const std::string& path, std::span<const uint8_t> profile);

}  // namespace client
