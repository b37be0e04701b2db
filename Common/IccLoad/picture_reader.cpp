#include <algorithm>

#include "IccLoad/profile_bytes.h"
#include "IccLoad/readers.h"
#include "ImageFile/file_window.h"
#include "base/bytes.h"

namespace qv {
namespace {

constexpr size_t kWindowBytes = 32767;
constexpr uint8_t kComment = 0xE0;  // the low byte of the comment's kind, 224
constexpr size_t kHeadBytes = 1 + 2 + 4;
enum Chunk : uint64_t { kFirst = 0, kNext = 1, kEnd = 2 };

Status AppendChunk(FileWindow& window, size_t bytes, IccProfileRecord* record) {
  while (bytes > 0) {
    const size_t part = std::min(bytes, kWindowBytes);
    if (!window.See(part)) return kProfileData;
    if (const Status status = AppendProfileBytes(record, window.Ahead().data(), part); !Ok(status)) return status;
    window.Skip(part);
    bytes -= part;
  }
  return kSuccess;
}

}  // namespace

Status ReadPictureProfile(File& file, IccProfileRecord* record) {
  FileWindow window(file, kWindowBytes);
  if (!window.HasMemory()) return kFailure;
  if (!file.Seek(0, Origin::kStart)) return kProfileData;
  while (window.See(1)) {
    const std::span<const uint8_t> seen = window.Ahead();
    const auto comment = std::ranges::find(seen, kComment);
    window.Skip(static_cast<size_t>(comment - seen.begin()));
    if (comment == seen.end()) continue;
    if (!window.See(kHeadBytes)) break;
    const uint64_t length = BigEndian(window.Ahead().subspan(1, 2)), type = BigEndian(window.Ahead().subspan(3, 4));
    if (type == kEnd) return kSuccess;
    const bool holds_profile = type == kFirst || type == kNext;
    window.Skip(holds_profile ? kHeadBytes : 1);
    if (!holds_profile) continue;
    if (length < 4) return kProfileData;
    if (const Status status = AppendChunk(window, length - 4, record); !Ok(status)) return status;
  }
  return kProfileData;
}

}  // namespace qv
