#include <cstring>

#include "IccSave/writers.h"
#include "ImageFile/copy_range.h"
#include "ImageFile/jpeg_segments.h"
#include "base/bytes.h"
#include "base/memory.h"
#include "base/replacement.h"

namespace qv {
namespace {

constexpr size_t kChunkBytes = kLargestJpegSegment - kIccPrefixBytes;
constexpr size_t kMostChunks = 255;
constexpr size_t kMarkerAndLength = 4;
constexpr auto kNoChunkBuffer = static_cast<Status>(8);  // positive: intended

bool WriteChunks(std::span<const uint8_t> profile, uint8_t* buffer, File& to) {
  const auto chunks = static_cast<uint8_t>((profile.size() + kChunkBytes - 1) / kChunkBytes);
  for (uint8_t number = 1; !profile.empty(); ++number) {
    const std::span<const uint8_t> chunk = profile.first(std::min(profile.size(), kChunkBytes));
    ByteWriter writer(buffer);
    writer.Big(0xFF00 | kJpegApp2, 2);
    writer.Big(2 + kIccPrefixBytes + chunk.size(), 2);
    writer.Copy(kIccSignature, sizeof kIccSignature);
    writer.Big(number, 1);
    writer.Big(chunks, 1);
    writer.Copy(chunk.data(), chunk.size());
    if (!to.Write(buffer, kMarkerAndLength + kIccPrefixBytes + chunk.size())) return false;
    profile = profile.subspan(chunk.size());
  }
  return true;
}

// Where the profile goes: to its first old segment, else behind the leading APP0 and APP1 segments.
Status FindPlace(File& source, int64_t* place) {
  JpegSegments segments(source);
  bool leading = true;
  *place = segments.Position();
  for (JpegSegment segment; segments.Next(&segment);) {
    if (segments.HoldsProfile(segment)) {
      *place = segment.begin;
      return kSuccess;
    }
    leading = leading && (segment.marker == kJpegApp0 || segment.marker == kJpegApp1);
    if (leading) *place = segment.end;
  }
  return segments.status();
}

// The whole of the file without its profile segments, and with the new ones at their place.
Status CopyWithProfile(File& source, int64_t size, int64_t place, std::span<const uint8_t> profile, uint8_t* buffer,
                       File& to) {
  if (!CopyRange(source, 0, place, to) || !WriteChunks(profile, buffer, to)) return kFileWrite;
  JpegSegments segments(source);
  int64_t copied = place;
  for (JpegSegment segment; segments.Next(&segment);) {
    if (segment.begin < place || !segments.HoldsProfile(segment)) continue;
    if (!CopyRange(source, copied, segment.begin, to)) return kFileWrite;
    copied = segment.end;
  }
  if (!Ok(segments.status())) return segments.status();
  return CopyRange(source, copied, size, to) ? kSuccess : kFileWrite;
}

}  // namespace

Status WriteJpegProfile(const QWChar* name, std::span<const uint8_t> profile) {
  if (profile.size() > kMostChunks * kChunkBytes) return kFailure;
  const auto buffer = NewArray<uint8_t>(kMarkerAndLength + kLargestJpegSegment);
  if (!buffer) return kNoChunkBuffer;
  File source;
  int64_t size = 0, place = 0;
  if (!source.Open(name, Disposition::kReadExisting) || !source.Seek(0, Origin::kEnd, &size)) return kFileAccess;
  if (const Status status = FindPlace(source, &place); !Ok(status)) return status;
  Replacement made;
  if (!made.Open(name)) return kFileOpen;
  const Status status = CopyWithProfile(source, size, place, profile, buffer.get(), made.file());
  if (!Ok(status)) return status;
  return source.Close() && made.Commit() ? kSuccess : kFileWrite;
}

}  // namespace qv
