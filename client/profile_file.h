// A file taken for an ICC profile. Its bytes are not trusted: they are read through NumberAt() and Part() only.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Qvclr15x.h"

namespace client {

inline constexpr uint32_t kHeaderBytes = 128, kTagsAt = 132;  // between them the number of tags
inline constexpr uint32_t kFormatFour = 0x04000000;           // the oldest version that a record takes

// A record of the library, filled from a profile of any version; what it keeps in `header` is the true one.
class ProfileRecord {
 public:
  explicit ProfileRecord(std::span<const uint8_t> profile);
  ~ProfileRecord();
  ProfileRecord(const ProfileRecord&) = delete;
  ProfileRecord& operator=(const ProfileRecord&) = delete;

  int32_t status() const { return status_; }
  const IccProfileRecord& record() const { return record_; }
  const IccHeader& header() const { return *record_.header; }
  std::span<const IccTagEntry> Tags() const;

 private:
  IccProfileRecord record_{};
  int32_t status_;
};

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

 private:
  std::string path_;
  std::vector<uint8_t> bytes_;
};

}  // namespace client
