#include "ImageFile/jpeg_segments.h"

#include <algorithm>
#include <cstring>

namespace qv {
namespace {

constexpr uint8_t kFill = 0xFF, kEndOfImage = 0xD9, kStartOfScan = 0xDA;

bool StandsAlone(uint8_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }

}  // namespace

bool JpegSegments::ReadAt(int64_t at, void* bytes, size_t count) {
  size_t taken = 0;
  return file_.Seek(at, Origin::kStart) && file_.Read(bytes, count, &taken) && taken == count;
}

bool JpegSegments::SkipFill() {
  uint8_t block[4096];
  for (size_t taken = sizeof block; taken == sizeof block;) {
    if (!file_.Seek(at_, Origin::kStart) || !file_.Read(block, sizeof block, &taken)) return false;
    const auto fill = std::ranges::find_if(block, block + taken, [](uint8_t byte) { return byte != kFill; }) - block;
    at_ += fill;
    if (static_cast<size_t>(fill) == taken) continue;
    --at_;
    return true;
  }
  return false;
}

bool JpegSegments::Next(JpegSegment* segment) {
  if (!Ok(status_)) return false;
  status_ = kProfileData;
  int64_t size = 0;
  if (!file_.Seek(0, Origin::kEnd, &size)) return false;
  for (int64_t begin = at_;;) {
    uint8_t head[4];  // fill or marker, marker, length
    if (!ReadAt(at_, head, 2) || head[0] != kFill) return false;
    if (head[1] == kFill) {
      if (!SkipFill()) return false;
      continue;
    }
    if (head[1] == kEndOfImage || head[1] == kStartOfScan) {
      at_ = begin;
      status_ = kSuccess;
      return false;
    }
    at_ += 2;
    if (StandsAlone(head[1])) {
      begin = at_;
      continue;
    }
    if (!ReadAt(at_, head + 2, 2)) return false;
    const int length = head[2] << 8 | head[3];
    *segment = {head[1], begin, at_ + 2, at_ + length};
    if (length < 2 || segment->end > size) return false;
    at_ = segment->end;
    status_ = kSuccess;
    return true;
  }
}

bool JpegSegments::HoldsProfile(const JpegSegment& segment) {
  char opening[sizeof kIccSignature];
  if (segment.marker != kJpegApp2 || segment.Bytes() <= sizeof opening) return false;
  if (!ReadAt(segment.data, opening, sizeof opening)) status_ = kProfileData;
  return Ok(status_) && std::memcmp(opening, kIccSignature, sizeof opening) == 0;
}

}  // namespace qv
