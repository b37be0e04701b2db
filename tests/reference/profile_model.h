// A profile kept the slow way: plain values, every change made by building the parts anew. Types are never decoded.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Qvclr15x.h"
#include "support/bytes.h"

namespace qv_test {

struct ProfileModel {
  struct Tag {
    int32_t status;
    uint32_t type, reserved;
    Bytes payload;  // behind the first eight bytes
  };

  Bytes header;        // in file order; empty for none
  uint32_t count = 0;  // as the record tells it
  uint64_t data_size = 0, image_size = 0;
  std::vector<IccTagEntry> entries;
  Bytes data, image;

  void InitHeader();
  int32_t Fill(std::span<const uint8_t> bytes);
  int32_t Append(uint32_t signature, uint32_t type, const Bytes& payload);
  uint32_t TypeOf(uint32_t signature) const;
  Tag Get(uint32_t signature) const;
  int32_t Delete(uint32_t signature);
  int32_t Generate();

  // What differs in a record, empty for nothing.
  std::string Difference(const IccProfileRecord& record) const;

 private:
  uint64_t Begin() const { return 132 + 12 * entries.size(); }
  const IccTagEntry* First(uint32_t signature) const;
  bool Inside(const IccTagEntry& entry) const;
};

uint32_t WordAt(std::span<const uint8_t> bytes, size_t at);  // big-endian; what lies outside is 0
void SetWordAt(Bytes& bytes, size_t at, uint32_t word);

}  // namespace qv_test
