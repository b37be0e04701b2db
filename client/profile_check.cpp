#include "profile_check.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <cmath>

#include "profile_names.h"
#include "profile_value.h"

namespace client {
namespace {

constexpr uint32_t kLastKnownMinor = 4;

bool VersionKnown(uint32_t version) {
  const uint32_t major = version >> 24, minor = version >> 20 & 15, fix = version >> 16 & 15;
  return (major == 2 || major == 4) && minor <= kLastKnownMinor && fix <= 9 && (version & 0xFFFF) == 0;
}

bool DateExists(IccDateTime date) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (date.month < 1 || date.month > 12) return false;
  const bool leap = date.year % 4 == 0 && (date.year % 100 != 0 || date.year % 400 == 0);
  const int days = date.month == 2 && leap ? 29 : kDays[date.month - 1];
  return date.day >= 1 && date.day <= days && date.hours < 24 && date.minutes < 60 && date.seconds < 60;
}

// D50 is given to four decimals, so its nearest neighbours are as good.
bool IsD50(const IccHeader& header) {
  constexpr long kTenThousandths[] = {9642, 10000, 8249};
  for (size_t i = 0; i < 3; ++i) {
    if (std::lround(static_cast<int32_t>(header.illuminant[i]) / 6.5536) != kTenThousandths[i]) return false;
  }
  return true;
}

template <typename Bytes>
bool AllZero(const Bytes& bytes) {
  return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; });
}

// The MD5 of the profile with flags, intent and ID taken as zero.
bool IdFits(const ProfileFile& file, const IccHeader& header) {
  struct Range {
    size_t begin, end;
  };
  constexpr Range kTakenAsZero[] = {{44, 48}, {64, 68}, {84, 100}};
  const std::span<const uint8_t> profile = file.Part(0, header.profileSize);
  if (profile.size() < kHeaderBytes) return false;
  std::vector<uint8_t> begin(profile.begin(), profile.begin() + kHeaderBytes);
  for (const Range& range : kTakenAsZero) std::fill(&begin[range.begin], &begin[range.end], uint8_t{0});

  cmsProfileID id;
  cmsHANDLE sum = cmsMD5alloc(nullptr);
  if (!sum) throw std::bad_alloc();
  cmsMD5add(sum, begin.data(), kHeaderBytes);
  cmsMD5add(sum, profile.data() + kHeaderBytes, static_cast<uint32_t>(profile.size() - kHeaderBytes));
  cmsMD5finish(&id, sum);
  return std::equal(std::begin(id.ID8), std::end(id.ID8), header.profileId);
}

void CheckReservedBits(const IccHeader& header, Defects* defects) {
  constexpr uint32_t kReservedFlags = 0xFFFC;           // the upper half is the vendor's
  constexpr uint64_t kReservedAttributes = 0xFFFFFFF0;  // likewise
  defects->AddUnless((header.flags & kReservedFlags) == 0, "reserved flags are set: ", Hex(header.flags, 8));
  defects->AddUnless((header.attributes & kReservedAttributes) == 0,
                     "reserved device attributes are set: ", Hex(header.attributes, 16));
  defects->AddUnless(AllZero(header.reserved), "reserved bytes of the header are not zero");
}

}  // namespace

std::vector<std::string> Defects::Lines() const {
  std::vector<std::string> lines = lines_;
  if (count_ > kMostTold) lines.push_back("and " + std::to_string(count_ - kMostTold) + " more");
  return lines;
}

void CheckHeader(const ProfileFile& file, const IccHeader& header, Defects* defects) {
  const bool link = header.deviceClass == Number("link");
  const bool version_4 = header.version >= kFormatFour;
  defects->AddUnless(header.profileSize == file.size(), "the size field tells ", header.profileSize,
                     " bytes, the file has ", file.size());
  defects->AddUnless(!version_4 || header.profileSize % 4 == 0, "the size field, ", header.profileSize,
                     ", is no multiple of 4");
  defects->AddUnless(VersionKnown(header.version), "unknown version ", Hex(header.version, 8));
  defects->AddUnless(ClassName(header.deviceClass), "unknown class ", Quoted(header.deviceClass));
  defects->AddUnless(SpaceName(header.colorSpace), "unknown colour space ", Quoted(header.colorSpace));
  if (link) {
    defects->AddUnless(SpaceName(header.connectionSpace), "unknown output space ", Quoted(header.connectionSpace));
  } else {
    defects->AddUnless(IsConnectionSpace(header.connectionSpace), "the connection space ",
                       Quoted(header.connectionSpace), " is neither 'XYZ ' nor 'Lab '");
  }
  defects->AddUnless(DateExists(header.dateTime), "the date does not exist");
  defects->AddUnless(header.signature == Number("acsp"), "no 'acsp' but ", Quoted(header.signature));
  defects->AddUnless(header.platform == 0 || PlatformName(header.platform), "unknown platform ",
                     Quoted(header.platform));
  defects->AddUnless(IntentName(header.renderingIntent), "unknown rendering intent ", header.renderingIntent);
  defects->AddUnless(IsD50(header), "the illuminant is not D50");
  CheckReservedBits(header, defects);
  // Before version 4 the bytes of the ID were reserved.
  defects->AddUnless(!version_4 || AllZero(header.profileId) || IdFits(file, header),
                     "the profile ID is not the MD5 of the profile");
}

Defects DefectsOf(const ProfileFile& file) {
  Defects defects;
  const IccHeader header = file.Header();
  CheckHeader(file, header, &defects);
  if (const std::vector<Tag> tags = CheckTagTable(file, header, &defects); !tags.empty()) {
    CheckRequiredTags(header, tags, &defects);
  }
  return defects;
}

}  // namespace client
