// Writers of profiles into image files, one for each way in which files carry them. Of no bytes at all, they remove the
// profile. TIFF and JPEG files are replaced whole, and stay as they are after a failure.
#pragma once

#include <cstdint>
#include <span>

#include "base/files.h"
#include "base/status.h"

namespace qv {

// A copy of the first directory with the tag goes to the end of the file; all else stays as and where it is.
// kProfileData for a file that libtiff does not read.
Status WriteTiffProfile(const QWChar* name, std::span<const uint8_t> profile);

// Segments of the profile stand where the first old one stood, else behind the leading APP0 and APP1 segments; all else
// is copied byte for byte. More than 255 segments: kFailure; kProfileData for a file that ends within a segment.
Status WriteJpegProfile(const QWChar* name, std::span<const uint8_t> profile);

// Appends an application extension in place of the trailer and the trailer behind it. The key has three binary bytes
// where others have digits, and what becomes of the bytes is not told (both intended). Nothing to write:
// kInvalidParameter.
Status WriteGifProfile(const QWChar* name, std::span<const uint8_t> profile);

}  // namespace qv
