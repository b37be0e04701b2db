// The header and the tag table of a profile in words.
#pragma once

#include "profile_file.h"
#include "profile_value.h"

namespace client {

struct ProfileView {
  Members header;
  List tags;  // rows of the same members
};

// Fails for a profile whose header and tag table do not fit together, or that has absurdly many tags.
ProfileView ViewOf(const ProfileFile& file);

}  // namespace client
