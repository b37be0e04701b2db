#include "reference/profile_model.h"

#include <algorithm>
#include <set>

namespace qv_test {
namespace {

int32_t RawStatus(uint32_t signature) {
  static const std::set<uint32_t> registered = {
      Sig("A2B0"), Sig("A2B1"), Sig("A2B2"), Sig("B2A0"), Sig("B2A1"), Sig("B2A2"), Sig("bXYZ"), Sig("bTRC"),
      Sig("chad"), Sig("cprt"), Sig("desc"), Sig("gXYZ"), Sig("gTRC"), Sig("rXYZ"), Sig("rTRC"), Sig("wtpt")};
  return registered.contains(signature) ? ERR_ICC_UNKNOWN_TAG_TYPE : ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE;
}

Bytes Slice(const Bytes& bytes, uint64_t from, uint64_t to) {
  Bytes slice;
  for (uint64_t i = from; i < to; ++i) slice.push_back(i < bytes.size() ? bytes[i] : 0);
  return slice;
}

void AddWord(Bytes& bytes, uint32_t word) {
  bytes.resize(bytes.size() + 4);
  SetWordAt(bytes, bytes.size() - 4, word);
}

// The header as a record must hold it: each number of ICC.1 7.2 turned round.
Bytes InHostOrder(Bytes header) {
  static const std::vector<size_t> ends = {0,  4,  8,  12, 16, 20, 24, 26, 28, 30, 32, 34,
                                           36, 40, 44, 48, 52, 56, 64, 68, 72, 76, 80, 84};
  for (size_t i = 1; i < ends.size(); ++i) std::reverse(header.begin() + ends[i - 1], header.begin() + ends[i]);
  return header;
}

template <typename T>
bool Holds(const T* memory, const Bytes& bytes) {
  return std::ranges::equal(std::span(reinterpret_cast<const uint8_t*>(memory), bytes.size()), bytes);
}

}  // namespace

uint32_t WordAt(std::span<const uint8_t> bytes, size_t at) {
  uint32_t word = 0;
  for (size_t i = at; i < at + 4; ++i) word = word * 256 + (i < bytes.size() ? bytes[i] : 0u);
  return word;
}

void SetWordAt(Bytes& bytes, size_t at, uint32_t word) {
  for (size_t i = 4; i-- > 0; word /= 256) bytes[at + i] = static_cast<uint8_t>(word);
}

void ProfileModel::InitHeader() {
  header.assign(128, 0);
  SetWordAt(header, 0, 132);
  SetWordAt(header, 8, 0x04200000);
  SetWordAt(header, 36, Sig("acsp"));
  const uint32_t d50[] = {0xF6D6, 0x10000, 0xD32D};
  for (size_t i = 0; i < 3; ++i) SetWordAt(header, 68 + 4 * i, d50[i]);
}

int32_t ProfileModel::Fill(std::span<const uint8_t> bytes) {
  image.assign(bytes.begin(), bytes.end());
  image_size = image.size();
  if (header.empty()) header.resize(128);
  const Bytes head = Slice(image, 0, 132);
  std::copy_n(head.begin(), 12, header.begin());
  if (head[8] < 4 || image.size() < 132) return ERR_ICC_INVALID_PROFILE;
  std::copy_n(head.begin(), 128, header.begin());
  count = WordAt(head, 128);
  if (count == 0 || count >= 0x80000000) return SUCCESS;

  entries.clear();
  data.clear();
  data_size = 0;
  const uint64_t size = WordAt(head, 0), begin = 132 + uint64_t{12} * count;
  if (size < begin) return ERR_FAILURE;
  if (image.size() < begin) return ERR_ICC_INVALID_PROFILE;
  for (size_t at = 132; at < begin; at += 12) {
    entries.push_back({WordAt(image, at), WordAt(image, at + 4), WordAt(image, at + 8)});
  }
  data = Slice(image, begin, size);
  data_size = data.size();
  return SUCCESS;
}

int32_t ProfileModel::Append(uint32_t signature, uint32_t type, const Bytes& payload) {
  if (header.empty() || count >= 0x80000000) return ERR_INV_PARAMETER;
  data = count == 0 ? Bytes(data_size) : data;
  Bytes tag;
  AddWord(tag, type);
  AddWord(tag, 0);
  tag.insert(tag.end(), payload.begin(), payload.end());
  const auto size = static_cast<uint32_t>(tag.size());
  while (tag.size() % 4 != 0) tag.push_back(0);

  for (IccTagEntry& entry : entries) entry.offset += 12;
  entries.push_back({signature, 0, size});
  entries.back().offset = static_cast<uint32_t>(Begin() + data.size());
  data.insert(data.end(), tag.begin(), tag.end());
  data_size = data.size();
  ++count;
  SetWordAt(header, 0, static_cast<uint32_t>(WordAt(header, 0) + tag.size() + 12));
  return RawStatus(signature);
}

const IccTagEntry* ProfileModel::First(uint32_t signature) const {
  for (const IccTagEntry& entry : entries) {
    if (entry.signature == signature) return &entry;
  }
  return nullptr;
}

bool ProfileModel::Inside(const IccTagEntry& entry) const {
  return entry.offset >= Begin() && uint64_t{entry.offset} + entry.size <= Begin() + data.size();
}

uint32_t ProfileModel::TypeOf(uint32_t signature) const {
  const IccTagEntry* entry = First(signature);
  const bool whole = entry && Inside(*entry) && entry->offset + uint64_t{4} <= Begin() + data.size();
  return whole ? WordAt(data, entry->offset - Begin()) : 0;
}

ProfileModel::Tag ProfileModel::Get(uint32_t signature) const {
  const IccTagEntry* entry = First(signature);
  if (!entry) return {ERR_ICC_TAG_NOT_FOUND, 0, 0, {}};
  if (!Inside(*entry)) return {ERR_ICC_INVALID_PROFILE, 0, 0, {}};
  const uint64_t at = entry->offset - Begin();
  if (at + 8 > data.size()) return {ERR_ICC_INVALID_PROFILE, 0, 0, {}};
  return {RawStatus(signature), WordAt(data, at), WordAt(data, at + 4), Slice(data, at + 8, at + entry->size)};
}

int32_t ProfileModel::Delete(uint32_t signature) {
  if (header.empty() || entries.empty()) return ERR_INV_PARAMETER;
  const IccTagEntry* first = First(signature);
  if (!first) return ERR_ICC_TAG_NOT_FOUND;
  if (!Inside(*first)) return ERR_ICC_INVALID_PROFILE;
  const IccTagEntry gone = *first;
  std::fill_n(header.begin() + 84, 16, uint8_t{0});
  const uint64_t at = gone.offset - Begin();
  entries.erase(entries.begin() + (first - entries.data()));
  if (--count == 0) {
    data.clear();
    return SUCCESS;
  }
  data.erase(data.begin() + static_cast<ptrdiff_t>(at), data.begin() + static_cast<ptrdiff_t>(at + gone.size));
  data_size = data.size();
  SetWordAt(header, 0, WordAt(header, 0) - gone.size - 12);
  for (IccTagEntry& entry : entries) {
    if (entry.offset >= gone.offset) entry.offset -= gone.size;
    entry.offset -= 12;
  }
  return SUCCESS;
}

int32_t ProfileModel::Generate() {
  if (header.empty()) return ERR_INV_PARAMETER;
  image_size = Begin() + data_size;
  if (WordAt(header, 0) != image_size || (entries.empty() && data_size != 0)) return ERR_ICC_INVALID_PROFILE;
  image = Slice(header, 0, 100);
  image.resize(128);
  AddWord(image, static_cast<uint32_t>(entries.size()));
  for (const IccTagEntry& entry : entries) {
    for (const uint32_t word : {entry.signature, entry.offset, entry.size}) AddWord(image, word);
  }
  image.insert(image.end(), data.begin(), data.end());
  return SUCCESS;
}

std::string ProfileModel::Difference(const IccProfileRecord& record) const {
  std::string told;
  const auto tell = [&](bool equal, const char* what) { told += equal ? "" : std::string(what) + " "; };
  tell(record.structSize == 56, "structSize");
  tell(record.tagCount == count, "tagCount");
  tell(record.tagDataSize == data_size, "tagDataSize");
  tell(record.profileByteSize == image_size, "profileByteSize");
  tell(header.empty() ? !record.header : record.header && Holds(record.header, InHostOrder(header)), "header");
  tell(image.empty() ? !record.profileBytes : record.profileBytes && Holds(record.profileBytes, image), "image");
  for (size_t i = 0; i < entries.size() && told.empty(); ++i) {
    const IccTagEntry entry = record.tagTable[i];
    tell(entry.signature == entries[i].signature, "signature");
    tell(entry.offset == entries[i].offset && entry.size == entries[i].size, "place");
  }
  if (told.empty() && !entries.empty()) tell(Holds(record.tagData, data), "data");
  return told;
}

}  // namespace qv_test
