// Records held against a slow model of them, after every operation: random ones, and all of them on damaged profiles.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "base/memory.h"
#include "reference/profile_model.h"
#include "support/system.h"

namespace {

using namespace qv_test;

const uint32_t kSignatures[] = {Sig("desc"), Sig("wtpt"), Sig("A2B0"), Sig("Priv"), 0, 0xFFFFFFFF};
const uint32_t kTypes[] = {Sig("Qraw"), Sig("Zzzz"), 1};

// A record and its model; every operation is made on both and must tell and leave the same.
class Twins {
 public:
  ProfileModel model;
  IccProfileRecord record;

  Twins() { Q_InitICCProfile(&record, sizeof record); }
  ~Twins() { Q_FreeICCProfile(&record); }
  Twins(const Twins&) = delete;
  Twins& operator=(const Twins&) = delete;

  void InitHeader() {
    model.InitHeader();
    Agree("InitHeader", Q_InitICCHeader(&record), SUCCESS);
  }
  int32_t Fill(std::span<const uint8_t> bytes) {
    const int32_t expected = model.Fill(bytes);
    Agree("Fill", Q_FillICCProfileStructure(&record, bytes.data(), static_cast<uint32_t>(bytes.size())), expected);
    return expected;
  }
  // From the record's own image, whose old parts are the caller's to release.
  void FillFromItself() {
    IccProfileRecord old = record;
    const Bytes bytes = model.image;
    const int32_t expected = model.Fill(bytes);
    EXPECT_EQ(Q_FillICCProfileStructure(&record, record.profileBytes, static_cast<uint32_t>(bytes.size())), expected);
    old.header = nullptr;
    Q_FreeICCProfile(&old);
    Agree("Fill from itself", expected, SUCCESS);
  }
  void Set(uint32_t signature, uint32_t type, std::span<uint8_t> payload) {
    const IccUnknownTagType tag = {type, 77, payload.data(), static_cast<uint32_t>(payload.size())};
    const int32_t expected = model.Append(signature, type, {payload.begin(), payload.end()});
    Agree("Set", Q_SetICCTagData(&record, &tag, signature, type), expected);
  }
  void Get(uint32_t signature) {
    EXPECT_EQ(Q_GetICCTagTypeSig(&record, signature), model.TypeOf(signature));
    IccUnknownTagType tag{};
    const int32_t status = Q_GetICCTagData(&record, &tag, signature);
    AgreeOnTag("Get", status, signature, &tag);
  }
  void Delete(uint32_t signature) {
    const int32_t expected = model.Delete(signature);
    Agree("Delete", Q_DeleteICCTag(&record, signature, nullptr), expected);
  }
  // No raw tag is read with success, so none is removed.
  void DeleteWithStructure(uint32_t signature) {
    IccUnknownTagType tag{};
    const int32_t status = Q_DeleteICCTag(&record, signature, &tag);
    if (model.entries.empty()) return Agree("Delete without tags", status, ERR_INV_PARAMETER);
    AgreeOnTag("Delete with structure", status, signature, &tag);
  }
  int32_t Generate() {
    const int32_t expected = model.Generate();
    Agree("Generate", Q_GenerateICCPointer(&record), expected);
    return expected;
  }

 private:
  void Agree(const char* operation, int32_t status, int32_t expected) {
    EXPECT_EQ(status, expected) << operation;
    EXPECT_EQ(model.Difference(record), "") << operation;
  }
  void AgreeOnTag(const char* operation, int32_t status, uint32_t signature, IccUnknownTagType* tag) {
    const ProfileModel::Tag expected = model.Get(signature);
    Agree(operation, status, expected.status);
    const bool read =
        expected.status == ERR_ICC_UNKNOWN_TAG_TYPE || expected.status == ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE;
    EXPECT_EQ(read, tag->data != nullptr) << operation;
    if (read && tag->data) {
      EXPECT_TRUE(tag->typeSignature == expected.type && tag->reserved == expected.reserved) << operation;
      EXPECT_EQ(Bytes(tag->data, tag->data + tag->dataSize), expected.payload) << operation;
    }
    Q_FreeICCTagType(tag, expected.type);
    EXPECT_FALSE(tag->data);
  }
};

class Random {
 public:
  size_t Below(size_t end) { return generator_() % end; }
  template <typename T, size_t kCount>
  const T& OneOf(const T (&choices)[kCount]) {
    return choices[Below(kCount)];
  }
  Bytes Some(size_t end) {
    Bytes bytes(Below(end));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(generator_());
    return bytes;
  }

 private:
  std::mt19937 generator_{20};  // the same numbers on every system
};

// Lies about sizes, places and counts, none of them by much: a profile that claims 4 GB is another test.
Bytes Damaged(Bytes bytes, Random& random) {
  if (random.Below(3) == 0) bytes.resize(132 + random.Below(bytes.size()));
  for (size_t changes = random.Below(4); changes > 0; --changes) {
    const size_t words = std::min<size_t>(WordAt(bytes, 128), 64) * 3, word = random.Below(words + 2);
    const size_t at = word == words ? 0 : word == words + 1 ? 128 : std::min(132 + 4 * word, bytes.size() - 4);
    const uint32_t old = WordAt(bytes, random.Below(2) || at < 132 ? at : 136), step = uint32_t(random.Below(25)) - 12;
    SetWordAt(bytes, at, at == 128 ? (random.Below(8) ? old + step / 4 % 3 : 0x80000000) : old + step);
  }
  return bytes;
}

TEST(ProfileModel, RecordsFollowItThroughRandomOperations) {
  const auto before = qv::Ledger();
  Random random;
  auto twins = std::make_unique<Twins>();
  Bytes last_image;
  size_t done[8] = {};
  for (int i = 0; i < 100000 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    const uint32_t signature = random.OneOf(kSignatures), type = random.OneOf(kTypes);
    size_t choice = random.Below(100);
    if (twins->model.entries.size() > 20 && choice >= 9 && choice < 32) choice = 60;
    const Bytes& data = twins->model.data;
    if (choice < 2) {
      twins = std::make_unique<Twins>();
      if (choice > 0 || random.Below(4) != 0) twins->InitHeader();
      ++done[0];
    } else if (choice < 9 && !last_image.empty()) {
      twins = std::make_unique<Twins>();
      if (random.Below(4) == 0) twins->InitHeader();
      const int32_t status = twins->Fill(Damaged(last_image, random));
      ++done[status == SUCCESS ? 1 : 2];
      if (status != SUCCESS) twins = std::make_unique<Twins>();
    } else if (choice < 28 || data.empty()) {
      Bytes payload = random.Some(40);
      payload.reserve(1);  // an empty array is not a null one
      twins->Set(signature, type, payload);
      ++done[3];
    } else if (choice < 32) {  // a piece of the record's own data
      const size_t at = random.Below(data.size());
      twins->Set(signature, type, {twins->record.tagData + at, random.Below(data.size() - at + 1)});
      ++done[4];
    } else if (choice < 55) {
      twins->Get(signature);
    } else if (choice < 72) {
      done[5] += twins->model.entries.size();
      twins->Delete(signature);
      done[5] -= twins->model.entries.size();
    } else if (choice < 77) {
      twins->DeleteWithStructure(signature);
    } else if (twins->Generate() == SUCCESS) {
      last_image = twins->model.image;
      ++done[6];
      if (random.Below(4) == 0) twins->FillFromItself();
    } else {
      ++done[7];
    }
  }
  for (const size_t& times : done) EXPECT_GT(times, 300u) << "the mixture reaches " << &times - done;
  twins.reset();
  EXPECT_EQ(qv::Ledger().blocks, before.blocks);
}

// Four tags; two share their bytes, and the last one's size is no multiple of four.
Bytes SmallProfile() {
  ProfileModel model;
  model.InitHeader();
  for (const uint32_t signature : {Sig("desc"), Sig("Priv"), Sig("wtpt")}) {
    model.Append(signature, Sig("Qraw"), Bytes(9 + signature % 7, uint8_t{0x40}));
  }
  model.Append(Sig("cprt"), Sig("Zzzz"), {1, 2, 3});
  model.entries[2].offset = model.entries[1].offset;
  model.Generate();
  return model.image;
}

void Everything(std::span<const uint8_t> bytes) {
  Twins twins;
  if (twins.Fill(bytes) != SUCCESS) return;
  const std::vector<IccTagEntry> entries = twins.model.entries;
  for (const IccTagEntry& entry : entries) twins.Get(entry.signature);
  Bytes payload = {5, 6, 7};
  twins.Generate();
  twins.Set(Sig("Priv"), Sig("Qraw"), payload);
  for (const IccTagEntry& entry : entries) {
    twins.Delete(entry.signature);
    twins.Generate();
  }
}

void EveryDamage(const Bytes& whole) {
  for (size_t length = 1; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    Everything(GuardedBuffer(std::span(whole).first(length)).bytes());
  }
  GuardedBuffer buffer(whole);
  for (size_t at = 0; at < whole.size(); ++at) {
    SCOPED_TRACE(at);
    for (const uint8_t value : {uint8_t{0}, uint8_t{255}}) {
      buffer.data()[at] = value;
      if (WordAt(buffer.bytes(), 0) < (1u << 20)) Everything(buffer.bytes());
      buffer.data()[at] = whole[at];
    }
  }
}

TEST(ProfileModel, RecordsFollowItOnEveryDamagedByteAndEveryCut) {
  EveryDamage(SmallProfile());
  ProfileModel without_tags;
  without_tags.InitHeader();
  without_tags.Generate();
  EveryDamage(without_tags.image);
}

TEST(ProfileModel, ClaimOfFourGigabytesCostsNone) {
  Bytes bytes = SmallProfile();
  SetWordAt(bytes, 0, 0xFFFFFFFF);
  SetWordAt(bytes, 140, 0xFFFFFFFF - WordAt(bytes, 136));  // the first tag reaches to the end
  IccProfileRecord record;
  Q_InitICCProfile(&record, sizeof record);
  const int32_t status = Q_FillICCProfileStructure(&record, bytes.data(), static_cast<uint32_t>(bytes.size()));
  EXPECT_TRUE(status == SUCCESS || status == ERR_FAILURE);
  if (status == SUCCESS) {
    Bytes payload(8);
    const IccUnknownTagType added = {Sig("Qraw"), 0, payload.data(), 8};
    EXPECT_EQ(Q_GetICCTagTypeSig(&record, Sig("desc")), Sig("Qraw"));
    EXPECT_EQ(Q_SetICCTagData(&record, &added, Sig("Priv"), Sig("Qraw")), ERR_FAILURE) << "above 4 GiB";
    EXPECT_EQ(+record.tagCount, 4u);
  }
  Q_FreeICCProfile(&record);
}

}  // namespace
