// The tracked allocator. Every block is zero-filled, knows where it was asked for, and stands in the ledger until it is
// released. A request that cannot be met, or whose size overflows, gives null; one for 0 bytes gives a valid block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace qv {

// The place of a call: as a default argument, that of the caller.
struct Where {
  const char* file;
  uint32_t line;
  static constexpr Where Here(const char* file = __builtin_FILE(), uint32_t line = __builtin_LINE()) {
    return {file, line};
  }
};

[[nodiscard]] void* Allocate(size_t size, size_t count, Where where = Where::Here());
// Null stands for a new block. A failed resizing leaves the block as it was.
[[nodiscard]] void* Resize(void* block, size_t bytes, Where where = Where::Here());
void Release(void* block);

// The second form, for profile byte images: its blocks can grow (the new bytes are zero), and are released by their own
// function. A failed growth leaves the image as it was.
[[nodiscard]] void* AllocateImage(size_t size, Where where = Where::Here());
[[nodiscard]] void* ResizeImage(void* image, size_t size, Where where = Where::Here());
void ReleaseImage(void* image);

size_t BytesOf(const void* block);  // of a live block of either form; 0 for null

struct LedgerTotals {
  size_t blocks;
  size_t bytes;
};
LedgerTotals Ledger();
struct LedgerEntry {
  size_t bytes;
  const char* file;
  uint32_t line;
};
// Calls with every live block, newest first; allocating or releasing in there is a deadlock.
void ListLedger(void (*visit)(const LedgerEntry& entry, void* user), void* user);

struct Releaser {
  void operator()(void* block) const { Release(block); }
};
template <typename T>
using Owned = std::unique_ptr<T, Releaser>;

// Releases and empties a field.
template <typename T>
void Drop(T*& field) {
  Release(field);
  field = nullptr;
}

// Null on failure. Trivial types only: zero bytes are their initial value and nothing is to be destroyed.
template <typename T>
[[nodiscard]] Owned<T> New(Where where = Where::Here()) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  return Owned<T>(static_cast<T*>(Allocate(sizeof(T), 1, where)));
}
template <typename T>
[[nodiscard]] Owned<T[]> NewArray(size_t count, Where where = Where::Here()) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  return Owned<T[]>(static_cast<T*>(Allocate(sizeof(T), count, where)));
}

}  // namespace qv
