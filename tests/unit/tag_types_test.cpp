// Every decoded tag type: its structure in both orders, its bytes, damaged tags, arrays that are not there, and failing
// allocations.
#include <gtest/gtest.h>

#include <cstring>

#include "base/memory.h"
#include "base/readable.h"
#include "support/system.h"
#include "unit/fault_sweep.h"
#include "unit/tag_samples.h"

namespace {

using namespace qv;
using namespace qv_test;

// Less or more of these is written than was read.
bool IsText(uint32_t type) { return type == Signature("text") || type == Signature("data"); }

// Two structures of one tag differ where their arrays are, and do in the lowest bytes of the addresses.
void FindPointers(uint8_t* one, const uint8_t* other, size_t bytes, std::vector<uint8_t*>& found) {
  for (size_t i = 0; i + sizeof(void*) <= bytes; i += 2) {
    uintptr_t block, twin;
    std::memcpy(&block, one + i, sizeof block);
    std::memcpy(&twin, other + i, sizeof twin);
    if (std::memcmp(one + i, other + i, 2) == 0 || !IsReadable(Address(block - 16), 16)) continue;
    found.push_back(one + i);
    FindPointers(reinterpret_cast<uint8_t*>(block), Address(twin), BytesOf(Address(block)), found);
    i += sizeof block - 2;
  }
}

struct EveryTagType : testing::TestWithParam<Sample> {
  void SetUp() override {
    for (Structure* tag : {&host, &twin}) ASSERT_EQ(Profile(sample().tag).Get(*tag), SUCCESS);
  }
  void TearDown() override {
    for (Structure* tag : {&host, &twin}) Q_FreeICCTagType(tag, sample().type);
    EXPECT_EQ(Ledger().blocks, blocks_before);
  }
  const Sample& sample() { return GetParam(); }
  // Where the host order's structure, and what it points to, has its arrays.
  std::vector<uint8_t*> Pointers() {
    std::vector<uint8_t*> found;
    FindPointers(host.bytes, twin.bytes, sizeof host.bytes, found);
    return found;
  }

  Structure host, twin;
  const size_t blocks_before = Ledger().blocks;
};

// What the structures hold is shown by qvclr's tests, which read them.
TEST_P(EveryTagType, IsWrittenAsItWasRead) {
  Bytes written = sample().tag;
  std::ranges::replace(written, uint8_t{0x7E}, uint8_t{0});
  if (!IsText(sample().type) || written[11] == 1) {
    EXPECT_EQ(SetBytes(host, sample().type), written);
    EXPECT_EQ(Rewritten(written), written);
  }
  const std::vector<uint8_t*> pointers = Pointers();
  const std::vector<uint32_t> without_arrays = {Sig("dtim"), Sig("meas"), Sig("sig "), Sig("view")};
  EXPECT_EQ(pointers.empty(), std::ranges::count(without_arrays, sample().type) != 0);
  Q_FreeICCTagType(&host, sample().type);
  for (const uint8_t* pointer : pointers) {
    if (pointer >= host.bytes && pointer < std::end(host.bytes)) EXPECT_EQ(BigEndian({pointer, 8}), 0u);
  }
}

// The bytes end at a page that nobody may touch, those that are read and those that are written. Whatever can be read
// can be written, and comes back as it was written.
Status ReadAndRewrite(const Sample& sample, const Bytes& bytes) {
  GuardedBuffer area(bytes);
  Structure host, file, again;
  const TagCodec& codec = *FindCodec(sample.type);
  const Status status = DecodeTag(codec, ByteReader(area.bytes()), &host);
  if (!Ok(status)) return status;
  EXPECT_EQ(ConstructTag(codec, sample.type, &host, &file), kSuccess);
  GuardedBuffer room(EncodedBytes(codec, &file));
  EncodeTag(codec, &file, room.data());
  for (Structure* tag : {&host, &file}) ReleaseTag(codec, tag);
  const Bytes written(room.data(), room.data() + room.size());
  EXPECT_EQ(Profile(written).Get(again), SUCCESS);
  if (!IsText(sample.type)) EXPECT_EQ(SetBytes(again, sample.type), written);
  ReleaseTag(codec, &again);
  return status;
}

TEST_P(EveryTagType, EndsWithTheBytes) {
  const Bytes whole = Rewritten(sample().tag);
  for (size_t length = 0; length < sample().tag.size(); ++length) {
    SCOPED_TRACE(length);
    const Status status = ReadAndRewrite(sample(), {sample().tag.begin(), sample().tag.begin() + length});
    const size_t least = sample().type == Signature("data") ? 12 : 8;
    EXPECT_EQ(status, sample().fills_tag && length >= least ? kSuccess : kInvalidProfile);
    // Of a tag that is too short for its counts, the rest is taken from what follows.
    Structure read;
    const TagCodec& codec = *FindCodec(sample().type);
    if (sample().fills_tag) continue;
    ASSERT_EQ(DecodeTag(codec, ByteReader(sample().tag, length), &read), kSuccess);
    EXPECT_EQ(SetBytes(read, sample().type), whole);
    ReleaseTag(codec, &read);
  }
}

TEST_P(EveryTagType, TakesOrRefusesAnyByte) {
  for (size_t i = 4; i < sample().tag.size(); ++i) {
    for (const uint8_t value : BytesFrom("00 01 7F FF")) {
      SCOPED_TRACE(testing::Message() << int{value} << " at " << i);
      Bytes bytes = sample().tag;
      bytes[i] = value;
      const Status status = ReadAndRewrite(sample(), bytes);
      EXPECT_TRUE(status == kSuccess || status == kInvalidProfile || status == kIccTagNotFound) << int32_t(status);
    }
  }
}

TEST_P(EveryTagType, NeedsItsArrays) {
  GuardedBuffer closed(PageSize());
  Protect(closed.data(), 1, Protection::kNone);
  const bool has_parts = sample().type == Signature("mAB ") || sample().type == Signature("mBA ");
  for (uint8_t* place : Pointers()) {
    for (const uint8_t* array : {static_cast<const uint8_t*>(nullptr), static_cast<const uint8_t*>(closed.data())}) {
      SCOPED_TRACE(testing::Message() << (array ? "closed" : "null") << " at " << place - host.bytes);
      uint8_t* kept;
      std::memcpy(&kept, place, sizeof kept);
      std::memcpy(place, &array, sizeof array);
      const bool optional = has_parts && !array && place >= host.bytes && place < std::end(host.bytes);
      const bool empty = array && BytesOf(kept) == 0;  // nothing of it is looked at
      Profile profile;
      Structure none;
      const size_t blocks = Ledger().blocks;
      if (optional || empty) {
        EXPECT_EQ(profile.Set(host, sample().type), SUCCESS);
        EXPECT_EQ(Rewritten(profile.Tag()), profile.Tag());
      } else {
        EXPECT_EQ(profile.Set(host, sample().type), ERR_INV_PARAMETER);
        EXPECT_EQ(Q_CreateICCTagData(&none, &host, sample().type), ERR_INV_PARAMETER);
        EXPECT_EQ(Ledger().blocks, blocks);
      }
      std::memcpy(place, &kept, sizeof kept);
    }
  }
  Protect(closed.data(), 1, Protection::kReadWrite);
}

TEST_P(EveryTagType, LeavesNothingWithoutMemory) {
  Structure made;
  const std::function<int32_t(Profile&)> calls[] = {
      [&](Profile& profile) { return profile.Get(made); },
      [&](Profile&) { return Q_CreateICCTagData(&made, &host, sample().type); },
      [&](Profile& profile) { return profile.Set(host, sample().type); }};
  for (const auto& call : calls) {
    const int faults = SweepFaults(allocation_faults, [&](Fault& fault) {
      Profile profile(sample().tag);
      made = {};
      const int32_t status = fault.During([&] { return call(profile); });
      EXPECT_EQ(status, fault.struck ? ERR_FAILURE : SUCCESS);
      Q_FreeICCTagType(&made, sample().type);
    });
    EXPECT_TRUE(faults >= 0 && faults < 100) << faults;
  }
}

INSTANTIATE_TEST_SUITE_P(Samples, EveryTagType, testing::ValuesIn(Samples()), [](const auto& of) {
  const std::string type(of.param.tag.begin(), of.param.tag.begin() + 4);
  return std::to_string(of.index) + "_" + type.substr(0, type.find(' '));
});

}  // namespace
