#include "ImageFile/image_format.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>

namespace qv {
namespace {

// Numbers of the toolkit's formats; families share a carrier.
constexpr int32_t kTiff[] = {3,   17,  22,  24,  85,  86,  87,  88,  93,  94,  95,  96,  97,  138, 139, 140, 141,
                             155, 166, 167, 174, 175, 176, 177, 269, 270, 271, 272, 273, 274, 275, 276, 315};
constexpr int32_t kJpeg[] = {10, 21, 23, 98, 101, 171, 172, 173};
constexpr int32_t kPostScript[] = {16, 63, 64, 300};
constexpr int32_t kPicture[] = {56};
constexpr int32_t kGif[] = {2};

struct Family {
  std::span<const int32_t> formats;
  ProfileCarrier carrier;
};
constexpr Family kFamilies[] = {{kTiff, ProfileCarrier::kTiffTag},
                                {kJpeg, ProfileCarrier::kJpegMarkers},
                                {kPostScript, ProfileCarrier::kPostScriptHex},
                                {kPicture, ProfileCarrier::kPictureComments},
                                {kGif, ProfileCarrier::kGifExtension}};

// Bytes by which a file is known.
struct Mark {
  int32_t format;
  size_t at;
  std::string_view bytes;
};
using namespace std::string_view_literals;
constexpr size_t kPictureHeaderBytes = 512;
constexpr Mark kMarks[] = {{3, 0, "II*\0"sv},
                           {3, 0, "MM\0*"sv},
                           {3, 0, "II+\0"sv},
                           {3, 0, "MM\0+"sv},
                           {10, 0, "\xFF\xD8\xFF"sv},
                           {16, 0, "%!"sv},
                           {16, 0, "\xC5\xD0\xD3\xC6"sv},
                           {2, 0, "GIF87a"sv},
                           {2, 0, "GIF89a"sv},
                           {56, kPictureHeaderBytes + 10, "\0\x11\x02\xFF"sv},
                           {56, 10, "\0\x11\x02\xFF"sv}};

}  // namespace

ProfileCarrier CarrierOf(int32_t format) {
  for (const Family& family : kFamilies) {
    if (std::ranges::find(family.formats, format) != family.formats.end()) return family.carrier;
  }
  return ProfileCarrier::kNone;
}

Status FindCarrier(File& file, ProfileCarrier* carrier) {
  std::array<char, kPictureHeaderBytes + 16> begin{};
  size_t taken = 0;
  *carrier = ProfileCarrier::kNone;
  if (!file.Seek(0, Origin::kStart) || !file.Read(begin.data(), begin.size(), &taken)) return kFileAccess;
  const std::string_view content(begin.data(), taken);
  for (const Mark& mark : kMarks) {
    if (content.size() < mark.at + mark.bytes.size() || content.substr(mark.at, mark.bytes.size()) != mark.bytes)
      continue;
    *carrier = CarrierOf(mark.format);
    break;
  }
  return kSuccess;
}

}  // namespace qv
