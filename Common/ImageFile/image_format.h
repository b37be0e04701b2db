// What an image file is, told by its first bytes, and how its format carries profiles.
#pragma once

#include <cstdint>

#include "base/files.h"
#include "base/status.h"

namespace qv {

enum class ProfileCarrier : uint8_t { kNone, kTiffTag, kJpegMarkers, kPostScriptHex, kPictureComments, kGifExtension };

// From the begin of an open file; leaves the position anywhere. kFileAccess when it cannot be read.
Status FindCarrier(File& file, ProfileCarrier* carrier);

// The toolkit's number of a format says how it carries profiles.
ProfileCarrier CarrierOf(int32_t format);

}  // namespace qv
