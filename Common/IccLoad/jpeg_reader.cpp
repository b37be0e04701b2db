#include "IccLoad/profile_bytes.h"
#include "IccLoad/readers.h"
#include "ImageFile/jpeg_segments.h"
#include "base/memory.h"

namespace qv {

Status ReadJpegProfile(File& file, IccProfileRecord* record) {
  const auto buffer = NewArray<uint8_t>(kLargestJpegSegment);
  if (!buffer) return kFailure;
  JpegSegments segments(file);
  for (JpegSegment segment; segments.Next(&segment);) {
    if (!segments.HoldsProfile(segment)) continue;
    if (segment.Bytes() < kIccPrefixBytes) return kFailure;
    const size_t bytes = segment.Bytes() - sizeof kIccSignature;
    size_t taken = 0;
    if (!file.Read(buffer.get(), bytes, &taken) || taken != bytes) return kProfileData;
    constexpr size_t kNumbers = kIccPrefixBytes - sizeof kIccSignature;
    if (const Status status = AppendProfileBytes(record, &buffer[kNumbers], bytes - kNumbers); !Ok(status)) {
      return status;
    }
  }
  return segments.status();
}

}  // namespace qv
