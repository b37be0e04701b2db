// What ICC.1:2010 demands of a profile's header, tag table and choice of tags, and where a profile falls short of it.
// Profiles of older versions are held only to what their own edition demands as well. Whether the adaptation matrix
// ('chad') may be absent depends on how a device was measured, which no profile tells.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "profile_file.h"

namespace client {

class Defects {
 public:
  template <typename... Parts>
  void Add(const Parts&... parts) {
    if (++count_ > kMostTold) return;
    std::ostringstream line;
    (line << ... << parts);
    lines_.push_back(line.str());
  }
  template <typename... Parts>
  void AddUnless(bool sound, const Parts&... parts) {
    if (!sound) Add(parts...);
  }
  std::vector<std::string> Lines() const;

 private:
  static constexpr size_t kMostTold = 1000;  // a hostile table could have hundreds of millions

  size_t count_ = 0;
  std::vector<std::string> lines_;
};

struct Tag {
  size_t place;  // in the table, from 1
  uint32_t signature, offset, size;

  uint64_t End() const { return uint64_t{offset} + size; }
};

void CheckHeader(const ProfileFile& file, const IccHeader& header, Defects* defects);

// The entries of the table; none, and a defect, when it does not fit in the file.
std::vector<Tag> CheckTagTable(const ProfileFile& file, const IccHeader& header, Defects* defects);

void CheckRequiredTags(const IccHeader& header, const std::vector<Tag>& tags, Defects* defects);

Defects DefectsOf(const ProfileFile& file);

}  // namespace client
