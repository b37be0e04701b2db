// Where the tags of a profile lie.
#include <algorithm>
#include <tuple>

#include "profile_check.h"
#include "profile_value.h"

namespace client {
namespace {

constexpr uint32_t kEntryBytes = 12, kReservedAt = 4, kMostPadding = 3;

std::string NameOf(const Tag& tag) { return "tag " + std::to_string(tag.place) + " " + Quoted(tag.signature); }

void CheckDuplicates(std::vector<Tag> tags, Defects* defects) {
  std::ranges::sort(tags, {}, [](const Tag& tag) { return std::tuple(tag.signature, tag.place); });
  for (size_t i = 1; i < tags.size(); ++i) {
    defects->AddUnless(tags[i].signature != tags[i - 1].signature, NameOf(tags[i]), " is there already as tag ",
                       tags[i - 1].place);
  }
}

// Whether it begins where tags may lie.
bool CheckPlace(const ProfileFile& file, const Tag& tag, uint64_t table_end, Defects* defects) {
  defects->AddUnless(tag.offset % 4 == 0, NameOf(tag), " begins at ", tag.offset, ", which is no multiple of 4");
  defects->AddUnless(tag.size >= kTagHeadBytes, NameOf(tag), " has ", tag.size, " bytes, less than any type needs");
  const bool behind_table = tag.offset >= table_end, in_file = tag.End() <= file.size();
  defects->AddUnless(behind_table, NameOf(tag), " lies in the header or the tag table");
  defects->AddUnless(in_file, NameOf(tag), " ends at ", tag.End(), ", outside of the file");
  return behind_table && tag.offset < file.size() && tag.size > 0;
}

// The bytes between two tags. Before version 4 nothing was said of them.
void CheckGap(const ProfileFile& file, uint64_t begin, uint64_t end, Defects* defects) {
  if (begin >= end) return;
  if (end - begin > kMostPadding) {
    defects->Add(end - begin, " bytes at ", begin, " belong to no tag");
  } else {
    const bool zero = std::ranges::all_of(file.Part(begin, end), [](uint8_t byte) { return byte == 0; });
    defects->AddUnless(zero, "padding at ", begin, " is not zero");
  }
}

// Takes the tags in the order of their bytes. Several may share the same bytes, but not some of them.
void CheckLayout(const ProfileFile& file, const IccHeader& header, std::vector<Tag> tags, uint64_t table_end,
                 Defects* defects) {
  std::ranges::sort(tags, {}, [](const Tag& tag) { return std::tuple(tag.offset, tag.size, tag.place); });
  const bool gaps_matter = header.version >= kFormatFour;
  uint64_t reached = table_end;
  const Tag *before = nullptr, *farthest = nullptr;
  for (const Tag& tag : tags) {
    const bool shared = before && tag.offset == before->offset && tag.size == before->size;
    if (!shared) {
      if (farthest) defects->AddUnless(tag.offset >= reached, NameOf(tag), " overlaps ", NameOf(*farthest));
      if (gaps_matter) CheckGap(file, reached, tag.offset, defects);
      defects->AddUnless(tag.size < kTagHeadBytes || file.NumberAt(uint64_t{tag.offset} + kReservedAt) == 0U,
                         NameOf(tag), " has reserved bytes that are not zero");
    }
    if (tag.End() > reached) {
      reached = tag.End();
      farthest = &tag;
    }
    before = &tag;
  }
  if (gaps_matter) CheckGap(file, reached, std::min<uint64_t>(header.profileSize, file.size()), defects);
}

}  // namespace

std::vector<Tag> CheckTagTable(const ProfileFile& file, const IccHeader& header, Defects* defects) {
  const uint32_t count = file.NumberAt(kHeaderBytes).value_or(0);
  const uint64_t table_end = kTagsAt + uint64_t{kEntryBytes} * count;
  if (count == 0) defects->Add("there are no tags");
  if (table_end > file.size()) {
    defects->Add("the table of ", count, " tags needs ", table_end, " bytes, the file has ", file.size());
    return {};
  }
  std::vector<Tag> tags, placed;
  for (uint64_t at = kTagsAt; at < table_end; at += kEntryBytes) {
    const auto number = [&](uint64_t offset) { return file.NumberAt(at + offset).value_or(0); };
    tags.push_back({tags.size() + 1, number(0), number(4), number(8)});
    if (CheckPlace(file, tags.back(), table_end, defects)) placed.push_back(tags.back());
  }
  CheckDuplicates(tags, defects);
  CheckLayout(file, header, placed, table_end, defects);
  return tags;
}

}  // namespace client
