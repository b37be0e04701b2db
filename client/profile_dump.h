// The header, the tag table and the tags of a profile in words.
#pragma once

#include "profile_file.h"
#include "profile_value.h"

namespace client {

struct ProfileView {
  Members header;
  List tags;    // rows of the same members
  List values;  // what each tag says: null for one that is too small for a type or lies outside of the file
};

// Lists of more than `most_items` are told by their ends. Fails for a profile whose header and tag table do not fit
// together, or that has absurdly many tags.
ProfileView ViewOf(const ProfileFile& file, size_t most_items);

}  // namespace client
