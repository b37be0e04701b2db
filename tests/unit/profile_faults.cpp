// Every profile function with its n-th allocation, and its n-th file call, failing: the right code, nothing left
// behind, and a record that every function can still be called with.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "base/faults.h"
#include "base/memory.h"
#include "reference/profile_model.h"
#include "unit/base_system.h"

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
  };
  each();
  Q_GenerateICCPointer(record);
  Q_DeleteICCTag(record, 0, nullptr);
  Q_DeleteICCTag(record, Sig("desc"), nullptr);
  each();
  SetTag(record);
  SetTag(record, Sig("wtpt"));
  each();
  Q_GenerateICCPointer(record);
  for (int i = 0; i < 4; ++i) Q_DeleteICCTag(record, Sig("desc"), nullptr);
  SetTag(record);
  Q_GenerateICCPointer(record);
}

// Gives the number of calls that can fail, which all must be told by `failed` or, in their order, by `codes`.
int Sweep(FaultHook& hook, size_t tags, int32_t expected, const Call& call, std::vector<int32_t> codes = {}) {
  IccProfileRecord first = RecordOfTags(1);  // asks for readable memory, for which a handle is opened and kept
  Q_FreeICCProfile(&first);
  const LedgerTotals before = Ledger();
  const size_t handles = OpenHandles();
  for (int n = 1; n < 100; ++n) {
    IccProfileRecord record = RecordOfTags(tags);
    hook.FailNth(n);
    const int32_t status = call(&record);
    const bool struck = !hook.Armed();
    hook.FailNth(0);
    const size_t i = static_cast<size_t>(n) - 1;
    EXPECT_EQ(status, !struck ? expected : i < codes.size() ? codes[i] : ERR_FAILURE) << "failure " << n;
    EXPECT_EQ(OpenHandles(), handles);
    EveryFunction(&record);
    Q_FreeICCProfile(&record);
    EXPECT_EQ(Ledger().blocks, before.blocks) << "failure " << n;
    EXPECT_EQ(Ledger().bytes, before.bytes) << "failure " << n;
    if (!struck) return n - 1;
  }
  return -1;
}

TEST(FailingAllocations, InProfileFunctions) {
  const Bytes image = ImageWithEmptyTag();
  const auto fill = [&](IccProfileRecord* record) {
    return Q_FillICCProfileStructure(record, image.data(), static_cast<uint32_t>(image.size()));
  };
  const auto sweep = [](size_t tags, int32_t expected, const Call& call) {
    return Sweep(allocation_faults, tags, expected, call);
  };
  EXPECT_EQ(sweep(0, SUCCESS, fill), 4) << "image, header, table, data";
  EXPECT_EQ(sweep(0, SUCCESS, Q_InitICCHeader), 1);
  for (const size_t tags : {1u, 2u, 5u}) {
    const auto set = [](IccProfileRecord* record) { return SetTag(record); };
    EXPECT_EQ(sweep(tags, ERR_ICC_UNKNOWN_TAG_TYPE, set), 3) << "copy, table, data";
    EXPECT_EQ(sweep(tags, SUCCESS, Q_GenerateICCPointer), 1);
  }
  EXPECT_EQ(sweep(0, ERR_ICC_UNKNOWN_TAG_TYPE,
                  [](IccProfileRecord* record) {
                    const int32_t status = Q_InitICCHeader(record);
                    return status == SUCCESS ? SetTag(record) : status;
                  }),
            4)
      << "the first tag of all";
  EXPECT_EQ(sweep(1, ERR_ICC_UNKNOWN_TAG_TYPE,
                  [](IccProfileRecord* record) {
                    EXPECT_EQ(Q_DeleteICCTag(record, Sig("desc"), nullptr), SUCCESS);
                    return SetTag(record);
                  }),
            3)
      << "behind data that the record still claims";
  // Create and Get may leave nothing in their structure, Delete nothing deleted.
  const Call into_structure[] = {[](IccProfileRecord*) {
                                   IccUnknownTagType copy{};
                                   const int32_t status = Q_CreateICCTagData(&copy, &kTag, Sig("Qraw"));
                                   EXPECT_EQ(copy.data != nullptr, status != ERR_FAILURE);
                                   Q_FreeICCTagType(&copy, Sig("Qraw"));
                                   return status;
                                 },
                                 [](IccProfileRecord* record) {
                                   IccUnknownTagType tag{};
                                   const int32_t status = Q_GetICCTagData(record, &tag, Sig("desc"));
                                   Q_FreeICCTagType(&tag, Sig("Qraw"));
                                   return status;
                                 },
                                 [](IccProfileRecord* record) {
                                   IccUnknownTagType tag{};
                                   const int32_t status = Q_DeleteICCTag(record, Sig("desc"), &tag);
                                   EXPECT_EQ(+record->tagCount, 2u);
                                   Q_FreeICCTagType(&tag, Sig("Qraw"));
                                   return status;
                                 }};
  for (const Call& call : into_structure) EXPECT_EQ(sweep(2, ERR_ICC_UNKNOWN_TAG_TYPE, call), 1);
}

TEST(FailingAllocations, RaiseTheCountOfAnAppendAndNothingElse) {
  IccProfileRecord record = RecordOfTags(2);
  for (const int n : {2, 3}) {
    allocation_faults.FailNth(n);
    EXPECT_EQ(SetTag(&record), ERR_FAILURE);
  }
  EXPECT_TRUE(record.tagCount == 4 && record.tagDataSize == 32 && record.header->profileSize == 132 + 24 + 32);
  Q_FreeICCProfile(&record);

  IccProfileRecord emptied = RecordOfTags(1);  // still claims 16 bytes of data, which no failed append brings back
  EXPECT_EQ(Q_DeleteICCTag(&emptied, Sig("desc"), nullptr), SUCCESS);
  allocation_faults.FailNth(3);
  EXPECT_EQ(SetTag(&emptied), ERR_FAILURE);
  EXPECT_EQ(emptied.header->profileSize, 132u + 12 + 16) << "the sum of the parts that are claimed";
  EXPECT_EQ(Q_GenerateICCPointer(&emptied), ERR_ICC_INVALID_PROFILE);
  Q_FreeICCProfile(&emptied);
}

TEST(FailingFileCalls, InProfileFunctions) {
  const auto path = std::filesystem::temp_directory_path() / "qv_profile_faults.icc";
  const std::basic_string<QWChar> name = path.string<QWChar>();
  const Bytes image = ImageWithEmptyTag();
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(image.data()), std::ssize(image));
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
  std::filesystem::remove(path);
}

}  // namespace
