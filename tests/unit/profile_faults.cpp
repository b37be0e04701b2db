// Every profile function with its n-th allocation, and its n-th file call, failing: the right code, nothing left
// behind, and a record that every function can still be called with.
#include <gtest/gtest.h>

#include "reference/profile_model.h"
#include "support/files.h"
#include "unit/fault_sweep.h"

namespace {

using namespace qv;
using namespace qv_test;
using Call = std::function<int32_t(IccProfileRecord*)>;

uint8_t payload[] = {1, 2, 3, 4, 5};
const IccUnknownTagType kTag = {Sig("Qraw"), 0, payload, sizeof payload};

int32_t SetTag(IccProfileRecord* record, uint32_t signature = Sig("desc")) {
  return Q_SetICCTagData(record, &kTag, signature, Sig("Qraw"));
}

IccProfileRecord RecordOfTags(size_t tags) {
  IccProfileRecord record;
  Q_InitICCProfile(&record, sizeof record);
  if (tags > 0) Q_InitICCHeader(&record);
  for (size_t i = 0; i < tags; ++i) EXPECT_EQ(SetTag(&record), ERR_ICC_UNKNOWN_TAG_TYPE);
  return record;
}

// A valid profile but for a first tag of no bytes.
Bytes ImageWithEmptyTag() {
  ProfileModel model;
  model.InitHeader();
  model.Append(Sig("desc"), Sig("Qraw"), {1, 2, 3});
  model.Append(Sig("wtpt"), Sig("Qraw"), {4, 5, 6, 7});
  model.entries[0].size = 0;
  model.Generate();
  return model.image;
}

void EveryFunction(IccProfileRecord* record) {
  const auto each = [&] {
    for (const uint32_t signature : {Sig("desc"), Sig("wtpt"), uint32_t{0}}) {
      IccUnknownTagType tag{};
      Q_GetICCTagTypeSig(record, signature);
      Q_GetICCTagData(record, &tag, signature);
      Q_FreeICCTagType(&tag, Sig("Qraw"));
    }
    Q_GenerateICCPointer(record);
  };
  each();
  Q_DeleteICCTag(record, 0, nullptr);
  Q_DeleteICCTag(record, Sig("desc"), nullptr);
  each();
  SetTag(record);
  SetTag(record, Sig("wtpt"));
  each();
  for (int i = 0; i < 4; ++i) Q_DeleteICCTag(record, Sig("desc"), nullptr);
  SetTag(record);
  Q_GenerateICCPointer(record);
}

// Gives the number of calls that can fail, which all must be told by ERR_FAILURE or, in their order, by `codes`.
int Sweep(FaultHook& hook, size_t tags, int32_t expected, const Call& call, const std::vector<int32_t>& codes = {}) {
  return SweepFaults(hook, [&](Fault& fault) {
    IccProfileRecord record = RecordOfTags(tags);
    const int32_t status = fault.During([&] { return call(&record); });
    const size_t i = static_cast<size_t>(fault.n) - 1;
    EXPECT_EQ(status, !fault.struck ? expected : i < codes.size() ? codes[i] : ERR_FAILURE);
    EveryFunction(&record);
    Q_FreeICCProfile(&record);
  });
}

TEST(ProfileFaults, OfAllocations) {
  const Bytes image = ImageWithEmptyTag();
  const auto sweep = [](size_t tags, int32_t expected, const Call& call) {
    return Sweep(allocation_faults, tags, expected, call);
  };
  const auto set = [](IccProfileRecord* record) { return SetTag(record); };
  EXPECT_EQ(sweep(0, SUCCESS,
                  [&](IccProfileRecord* record) {
                    return Q_FillICCProfileStructure(record, image.data(), static_cast<uint32_t>(image.size()));
                  }),
            4)
      << "image, header, table, data";
  EXPECT_EQ(sweep(0, SUCCESS, Q_InitICCHeader), 1);
  for (const size_t tags : {1u, 2u, 5u}) {
    EXPECT_EQ(sweep(tags, ERR_ICC_UNKNOWN_TAG_TYPE, set), 3) << "copy, table, data";
    EXPECT_EQ(sweep(tags, SUCCESS, Q_GenerateICCPointer), 1);
  }
  EXPECT_EQ(sweep(1, ERR_ICC_UNKNOWN_TAG_TYPE,
                  [](IccProfileRecord* record) {
                    EXPECT_EQ(Q_DeleteICCTag(record, Sig("desc"), nullptr), SUCCESS);
                    return SetTag(record);
                  }),
            3)
      << "behind data that the record still claims";
  // Nothing stays in a structure, and nothing is deleted.
  using IntoStructure = int32_t (*)(IccProfileRecord*, IccUnknownTagType*);
  const IntoStructure into_structure[] = {
      [](IccProfileRecord*, IccUnknownTagType* tag) { return Q_CreateICCTagData(tag, &kTag, Sig("Qraw")); },
      [](IccProfileRecord* record, IccUnknownTagType* tag) { return Q_GetICCTagData(record, tag, Sig("desc")); },
      [](IccProfileRecord* record, IccUnknownTagType* tag) { return Q_DeleteICCTag(record, Sig("desc"), tag); }};
  for (const IntoStructure into : into_structure) {
    EXPECT_EQ(sweep(2, ERR_ICC_UNKNOWN_TAG_TYPE,
                    [into](IccProfileRecord* record) {
                      IccUnknownTagType tag{};
                      const int32_t status = into(record, &tag);
                      EXPECT_EQ(tag.data != nullptr, status != ERR_FAILURE);
                      EXPECT_EQ(+record->tagCount, 2u);
                      Q_FreeICCTagType(&tag, Sig("Qraw"));
                      return status;
                    }),
              1);
  }
}

TEST(ProfileFaults, RaiseTheCountOfAnAppendAndNothingElse) {
  IccProfileRecord record = RecordOfTags(2);
  for (const int n : {2, 3}) {
    allocation_faults.FailNth(n);
    EXPECT_EQ(SetTag(&record), ERR_FAILURE);
  }
  EXPECT_TRUE(record.tagCount == 4 && record.tagDataSize == 32 && record.header->profileSize == 132 + 24 + 32);
  Q_FreeICCProfile(&record);
}

TEST(ProfileFaults, OfFileCalls) {
  const Folder folder("qv_profile_faults");
  const auto name = folder.Write("image.icc", ImageWithEmptyTag()).string<QWChar>();
  const Call fill = [&](IccProfileRecord* record) { return Q_FillICCProfileFromICCFile(name.c_str(), record); };
  const Call generate = [&](IccProfileRecord* record) {
    EXPECT_EQ(Q_GenerateICCPointer(record), SUCCESS);
    return Q_GenerateICCFile(record, name.c_str());
  };
  constexpr int32_t kRead = ERR_FILE_READ;
  EXPECT_EQ(Sweep(allocation_faults, 0, SUCCESS, fill), 5) << "buffer, image, header, table, data";
  EXPECT_EQ(Sweep(file_faults, 0, SUCCESS, fill, {ERR_FILE_OPEN, kRead, kRead, kRead, kRead, kRead, SUCCESS}), 7)
      << "open, read, seek, read, seek, read; a failed close is not told";
  EXPECT_EQ(Sweep(file_faults, 2, SUCCESS, generate, {ERR_FILE_OPEN, ERR_FILE_WRITE, ERR_FILE_WRITE}), 3);
}

}  // namespace
