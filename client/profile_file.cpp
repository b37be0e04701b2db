#include "profile_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "failure.h"
#include "files.h"
#include "names.h"

namespace client {

uint32_t BigEndian(std::span<const uint8_t> bytes) {
  uint32_t number = 0;
  for (const uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

void StoreBigEndian(uint32_t number, std::span<uint8_t> to) {
  for (size_t i = to.size(); i > 0; --i, number >>= 8) to[i - 1] = static_cast<uint8_t>(number);
}

ProfileFile::ProfileFile(const std::string& path) : path_(path) {
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(NativePath(path), error);
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

std::vector<uint8_t> ProfileFile::ForEditing() const {
  const IccHeader header = Header();
  if (header.version < kFormatFour) Fail(path_, ": profiles older than version 4 can be shown, but not edited");
  if (header.profileSize != size()) {
    Fail(path_, ": the size field tells ", header.profileSize, " bytes, the file has ", size(), "; it is not edited");
  }
  std::vector<uint8_t> profile = bytes_;
  profile.resize((profile.size() + 3) / 4 * 4);  // what is appended begins at a multiple of four
  StoreBigEndian(static_cast<uint32_t>(profile.size()), std::span(profile).first(4));
  return profile;
}

void WriteProfile(const std::string& path, std::span<const uint8_t> profile) {
  OutputFile output(path);
  std::ofstream file(NativePath(output.PartPath()), std::ios::binary | std::ios::trunc);
  if (!file) Fail(path, ": cannot be created");
  file.write(reinterpret_cast<const char*>(profile.data()), static_cast<std::streamsize>(profile.size()));
  file.close();
  if (!file) Fail(path, ": writing failed (is the disk full?)");
  output.Commit();
}

}  // namespace client
