// The unit tests hold the library's objects themselves: they attach it, and at the end its ledger must be empty.
#include <gtest/gtest.h>

#include <cstdio>

#include "base/memory.h"
#include "qvclr/library.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qv::AttachLibrary();
  qv::kept_transforms = 0;  // what a call leaves behind is then a leak
  const int result = RUN_ALL_TESTS();
  qv::DetachLibrary();
  qv::ListLedger(
      [](const qv::LedgerEntry& entry, void*) {
        std::fprintf(stderr, "never released: %zu bytes of %s:%u\n", entry.bytes, entry.file, entry.line);
      },
      nullptr);
  return qv::Ledger().blocks == 0 ? result : 1;
}
