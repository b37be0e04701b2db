// A record of the library that holds a profile: its tags decoded, and the ways to edit them.
#pragma once

#include <cstdint>
#include <span>

#include "Qvclr15x.h"

namespace client {

inline constexpr uint32_t kHeaderBytes = 128, kTagsAt = 132;  // between them the number of tags
inline constexpr uint32_t kTagHeadBytes = 8;                  // the type's signature and a reserved word
inline constexpr uint32_t kFormatFour = 0x04000000;           // the oldest version that a record takes

// Whether a call about a tag did its work; it also tells when the tag or its type is not a registered one.
bool Done(int32_t status);

// A tag in the structure of its type.
class DecodedTag {
 public:
  DecodedTag(const IccProfileRecord& record, uint32_t signature);
  ~DecodedTag();
  DecodedTag(const DecodedTag&) = delete;
  DecodedTag& operator=(const DecodedTag&) = delete;

  int32_t status() const { return status_; }
  uint32_t type() const { return type_; }
  template <typename Structure>
  const Structure& As() const {
    static_assert(sizeof(Structure) <= kMostBytes);
    return *reinterpret_cast<const Structure*>(bytes_);
  }

 private:
  static constexpr size_t kMostBytes = 128;

  alignas(8) uint8_t bytes_[kMostBytes] = {};
  uint32_t type_;
  int32_t status_;
};

class ProfileRecord {
 public:
  ProfileRecord();  // of a new profile
  // Filled from a profile of any version; `header` keeps it, and the size that the profile claims. What it claims
  // beyond the bytes that are there is no data: the library would take it for zeros, up to 4 GiB of them.
  explicit ProfileRecord(std::span<const uint8_t> profile);
  ~ProfileRecord();
  ProfileRecord(const ProfileRecord&) = delete;
  ProfileRecord& operator=(const ProfileRecord&) = delete;

  int32_t status() const { return status_; }
  IccProfileRecord* record() { return &record_; }
  const IccHeader& header() const { return *record_.header; }
  std::span<const IccTagEntry> Tags() const { return Table(); }

  // By its place in the table: of several tags of a signature the library itself reads the first only.
  DecodedTag Decoded(size_t place);
  std::span<const uint8_t> TagBytes(size_t place) const;  // none where they lie outside of the data

  // Editing. What the library refuses ends the command; the profile's ID is cleared.
  void Set(uint32_t signature, uint32_t type, const void* structure);  // in place of all of the signature
  void SetBytes(uint32_t signature, std::span<const uint8_t> tag);     // the same, of a tag as it stands
  bool Remove(uint32_t signature);                                     // all of them; whether there was one
  std::span<const uint8_t> Generate();                                 // the profile's bytes

 private:
  std::span<IccTagEntry> Table() const;
  uint64_t DataBegin() const;
  uint32_t OwnBytes(const IccTagEntry& tag) const;
  void Append(uint32_t signature, uint32_t type, const void* structure);

  IccProfileRecord record_{};
  int32_t status_;
};

}  // namespace client
