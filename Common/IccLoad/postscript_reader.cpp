#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "IccLoad/profile_bytes.h"
#include "IccLoad/readers.h"
#include "ImageFile/file_window.h"

namespace qv {
namespace {

constexpr size_t kWindowBytes = 1024;
constexpr std::string_view kBegin = "%%BeginICCProfile:", kEnd = "%%EndICCProfile";

bool StartsWith(const FileWindow& window, std::string_view text) {
  return std::memcmp(window.Ahead().data(), text.data(), text.size()) == 0;
}

// -1 for what is no digit.
constexpr int DigitOf(uint8_t character) {
  if (character >= '0' && character <= '9') return character - '0';
  const int letter = (character | 0x20) - 'a';
  return letter >= 0 && letter < 6 ? letter + 10 : -1;
}

// Bytes reach the record in groups of 80, when the byte behind the group arrives.
class Groups {
 public:
  explicit Groups(IccProfileRecord* record) : record_(record) {}

  Status Add(uint8_t byte) {
    if (used_ == group_.size()) {
      used_ = 0;
      if (const Status status = AppendProfileBytes(record_, group_.data(), group_.size()); !Ok(status)) return status;
    }
    group_[used_++] = byte;
    return kSuccess;
  }

 private:
  IccProfileRecord* record_;
  std::array<uint8_t, 80> group_{};
  size_t used_ = 0;
};

Status FindBegin(FileWindow& window) {
  while (window.See(kBegin.size())) {
    if (StartsWith(window, kBegin)) {
      window.Skip(kBegin.size());
      return kSuccess;
    }
    const std::span<const uint8_t> rest = window.Ahead().subspan(1);
    window.Skip(1 + static_cast<size_t>(std::ranges::find(rest, uint8_t{'%'}) - rest.begin()));
  }
  return kProfileNotFound;
}

// From behind "% " up to where the next line is looked for.
Status ReadPairs(FileWindow& window, Groups& groups) {
  while (window.See(4)) {
    const std::span<const uint8_t> ahead = window.Ahead();
    const int high = DigitOf(ahead[0]), low = DigitOf(ahead[1]);
    if (high >= 0 && low >= 0) {
      if (const Status status = groups.Add(static_cast<uint8_t>(high << 4 | low)); !Ok(status)) return status;
      window.Skip(2);
    } else if (high >= 0) {  // half a byte is dropped
      window.Skip(1);
      return kSuccess;
    } else if (ahead[0] == '\r' && ahead[1] == '\n' && ahead[2] == ' ') {
      window.Skip(3);
    } else if (ahead[0] == '\r') {
      window.Skip(ahead[1] == '\n' ? 2 : 1);
      return kSuccess;
    } else {
      return ahead[0] == '%' ? kSuccess : kProfileData;
    }
  }
  return kProfileData;
}

Status ReadLines(FileWindow& window, Groups& groups) {
  while (window.See(5)) {
    const std::span<const uint8_t> ahead = window.Ahead();
    if (ahead[0] != '%') {
      window.Skip(1);
    } else if (ahead[1] == '%') {
      if (!window.See(kEnd.size())) return kProfileData;
      if (StartsWith(window, kEnd)) return kSuccess;
      window.Skip(2);
    } else {
      const bool data = ahead[1] == ' ';
      window.Skip(2);
      if (!data) continue;
      if (const Status status = ReadPairs(window, groups); !Ok(status)) return status;
    }
  }
  return kProfileData;
}

}  // namespace

Status ReadPostScriptProfile(File& file, IccProfileRecord* record) {
  FileWindow window(file, kWindowBytes);
  if (!window.HasMemory()) return kFailure;
  if (!file.Seek(0, Origin::kStart)) return kProfileData;
  if (const Status status = FindBegin(window); !Ok(status)) return status;
  if (!window.See(1)) return kProfileNoData;
  Groups groups(record);
  return ReadLines(window, groups);
}

}  // namespace qv
