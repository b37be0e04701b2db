// Readers of embedded profiles, one for each way in which files carry them. Each gets a file that is open for reading
// and appends what it finds to the record; finding nothing is success, unless it says otherwise.
#pragma once

#include "base/files.h"
#include "base/status.h"

namespace qv {

// Tag 34675 of the first directory. kProfileNotFound without it; kProfileData for a file that libtiff does not read.
Status ReadTiffProfile(File& file, IccProfileRecord* record);

// The "ICC_PROFILE" segments before the first scan, joined in the order of the file. A segment that ends before its 14
// bytes of prefix: kFailure; a file that ends within a segment: kProfileData.
Status ReadJpegProfile(File& file, IccProfileRecord* record);

// Hexadecimal data between "%%BeginICCProfile:" and "%%EndICCProfile". Lines must end in CR or CR LF (a lone LF is
// kProfileData), and only groups of 80 bytes that more bytes follow are taken: the last 1 to 80 are dropped (both
// intended). kProfileNotFound without the begin; kProfileNoData when nothing follows it; kProfileData without an end.
Status ReadPostScriptProfile(File& file, IccProfileRecord* record);

// The chunks of picture comment 224. kProfileData when the last one is missing.
Status ReadPictureProfile(File& file, IccProfileRecord* record);

}  // namespace qv
