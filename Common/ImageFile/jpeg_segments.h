// The segments of a JPEG file before its first scan.
#pragma once

#include <cstdint>

#include "base/files.h"
#include "base/status.h"

namespace qv {

inline constexpr uint8_t kJpegApp0 = 0xE0, kJpegApp1 = 0xE1, kJpegApp2 = 0xE2;
inline constexpr size_t kLargestJpegSegment = 65533;

struct JpegSegment {
  uint8_t marker;
  int64_t begin;      // of its marker, or of the fill bytes before that
  int64_t data, end;  // of what follows its length
  size_t Bytes() const { return static_cast<size_t>(end - data); }
};

// What a profile segment opens with, before the chunk's number and the number of chunks.
inline constexpr char kIccSignature[] = "ICC_PROFILE";  // the terminator counts
inline constexpr size_t kIccPrefixBytes = sizeof kIccSignature + 2;

class JpegSegments {
 public:
  explicit JpegSegments(File& file) : file_(file) {}

  // The next segment that has a length. False at the first scan, at the end of the image, and after a failure.
  bool Next(JpegSegment* segment);
  // Whether the segment opens like a profile's; leaves the position behind the signature then.
  bool HoldsProfile(const JpegSegment& segment);

  // kProfileData for a file that ends within a segment or has something else in a marker's place.
  Status status() const { return status_; }
  int64_t Position() const { return at_; }  // behind the last segment

 private:
  bool ReadAt(int64_t at, void* bytes, size_t count);
  bool SkipFill();  // to the last fill byte, which stands before its marker

  File& file_;
  int64_t at_ = 2;  // behind the start of the image
  Status status_ = kSuccess;
};

}  // namespace qv
