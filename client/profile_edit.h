// Making tags from words, and the commands that do it.
#pragma once

#include <string>
#include <vector>

#include "profile_record.h"

namespace CLI {
class App;
}

namespace client {

struct NewTag {
  uint32_t signature, type;
  std::vector<std::string> words;
};

// In place of the tags of its signature. Fails for words that do not make a tag of the type.
void SetTag(ProfileRecord* profile, const NewTag& tag);

// From the content of a file: a binary 'data', or what follows the head of a type that the library does not decode.
void SetTag(ProfileRecord* profile, const NewTag& tag, const std::vector<uint8_t>& content);

// A line per type: what its words are.
std::string TypesOfWords();

// new, set, delete and copy-tag.
void AddProfileEditCommands(CLI::App* group);

// embed, extract and strip.
void AddProfileImageCommands(CLI::App* group);

}  // namespace client
