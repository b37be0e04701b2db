#include <algorithm>

#include "IccSave/writers.h"

namespace qv {

Status WriteGifProfile(const QWChar* name, std::span<const uint8_t> profile) {
  constexpr uint8_t kOpening[] = {0x21, 0xFF, 0x0B, 'I', 'C', 'C', 'R', 'G', 'B', 'G', '1', 0x00, 0x01, 0x02};
  constexpr uint8_t kEnding[] = {0x00, 0x3B};
  constexpr size_t kFullBlock = 255;
  if (profile.empty()) return kInvalidParameter;
  File file;
  if (!file.Open(name, Disposition::kEditExisting)) return kFileOpen;
  static_cast<void>(file.Seek(-1, Origin::kEnd));  // over the trailer
  static_cast<void>(file.Write(kOpening, sizeof kOpening));
  while (!profile.empty()) {
    const std::span<const uint8_t> block = profile.first(std::min(profile.size(), kFullBlock));
    const auto bytes = static_cast<uint8_t>(block.size());
    static_cast<void>(file.Write(&bytes, 1));
    static_cast<void>(file.Write(block.data(), block.size()));
    profile = profile.subspan(block.size());
  }
  static_cast<void>(file.Write(kEnding, sizeof kEnding));
  return kSuccess;
}

}  // namespace qv
