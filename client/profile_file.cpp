#include "profile_file.h"

#include <algorithm>
#include <filesystem>

#include "failure.h"
#include "files.h"
#include "names.h"

namespace client {
namespace {

constexpr uint32_t kVersionAt = 8;

uint32_t BigEndian(std::span<const uint8_t> bytes) {
  uint32_t number = 0;
  for (const uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

void StoreBigEndian(uint32_t number, std::span<uint8_t> to) {
  for (size_t i = to.size(); i > 0; --i, number >>= 8) to[i - 1] = static_cast<uint8_t>(number);
}

}  // namespace

ProfileRecord::ProfileRecord(std::span<const uint8_t> profile) {
  std::vector<uint8_t> copy(profile.begin(), profile.end());
  const std::span<uint8_t> version = std::span(copy).subspan(kVersionAt, 4);
  const uint32_t true_version = BigEndian(version);
  StoreBigEndian(std::max(true_version, kFormatFour), version);
  Q_InitICCProfile(&record_, sizeof record_);
  status_ = Q_FillICCProfileStructure(&record_, copy.data(), static_cast<uint32_t>(copy.size()));
  if (record_.header) record_.header->version = true_version;
}

ProfileRecord::~ProfileRecord() { Q_FreeICCProfile(&record_); }

std::span<const IccTagEntry> ProfileRecord::Tags() const {
  const bool none = record_.tagCount > INT32_MAX || !record_.tagTable;  // negative as a signed number
  return {record_.tagTable, none ? 0 : record_.tagCount};
}

ProfileFile::ProfileFile(const std::string& path) : path_(path) {
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(path, error);
  if (error) Fail(path, ": cannot be read");
  if (size < kTagsAt) Fail(path, ": too short for an ICC profile");
  if (size > UINT32_MAX) Fail(path, ": too large for an ICC profile");
  bytes_ = ReadFile(path);
  if (bytes_.size() != size) Fail(path, ": changes while it is read");
}

std::optional<uint32_t> ProfileFile::NumberAt(uint64_t offset) const {
  const std::span<const uint8_t> part = Part(offset, offset + 4);
  if (part.size() != 4) return std::nullopt;
  return BigEndian(part);
}

std::span<const uint8_t> ProfileFile::Part(uint64_t begin, uint64_t end) const {
  end = std::min<uint64_t>(end, bytes_.size());
  if (begin >= end) return {};
  return std::span(bytes_).subspan(begin, end - begin);
}

IccHeader ProfileFile::Header() const {
  std::vector<uint8_t> alone(bytes_.begin(), bytes_.begin() + kTagsAt);
  StoreBigEndian(0, std::span(alone).subspan(kHeaderBytes));  // no tags, so that the table cannot be at fault
  const ProfileRecord record(alone);
  if (record.status() != SUCCESS) Fail(path_, ": ", StatusText(record.status()));
  return record.header();
}

}  // namespace client
