// The system as tests use it: pages of memory, buffers that end (or begin) at a page that nobody may touch, and
// modules.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace qv_test {

enum class Protection : uint8_t { kNone, kReadOnly, kReadWrite };

size_t PageSize();
// Whole pages of zeros, readable and writable.
uint8_t* MapPages(size_t pages);
void UnmapPages(uint8_t* pages, size_t count);
void Protect(uint8_t* pages, size_t count, Protection protection);

// `size` bytes between two inaccessible pages, flush with one of them.
class GuardedBuffer {
 public:
  enum class Flush : uint8_t { kEnd, kStart };

  explicit GuardedBuffer(size_t size, Flush flush = Flush::kEnd)
      : size_(size), pages_(size == 0 ? 1 : (size + PageSize() - 1) / PageSize()), base_(MapPages(pages_ + 2)) {
    Protect(base_, 1, Protection::kNone);
    Protect(base_ + (pages_ + 1) * PageSize(), 1, Protection::kNone);
    data_ = base_ + PageSize() + (flush == Flush::kEnd ? pages_ * PageSize() - size : 0);
  }
  explicit GuardedBuffer(std::span<const uint8_t> bytes, Flush flush = Flush::kEnd)
      : GuardedBuffer(bytes.size(), flush) {
    if (!bytes.empty()) std::memcpy(data_, bytes.data(), bytes.size());
  }
  ~GuardedBuffer() { UnmapPages(base_, pages_ + 2); }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  uint8_t* data() { return data_; }
  const uint8_t* data() const { return data_; }
  size_t size() const { return size_; }
  std::span<uint8_t> bytes() { return {data_, size_}; }
  void MakeReadOnly() { Protect(base_ + PageSize(), pages_, Protection::kReadOnly); }

 private:
  size_t size_, pages_;
  uint8_t* base_;
  uint8_t* data_;
};

void* LoadModule(const char* path);  // as the hosts do; null on failure
void UnloadModule(void* module);
void* SystemModule();  // a library of the system, without the toolkit's resources

inline const char* const kSatellite = QV_SATELLITE;  // tests/satellite, built
inline const char* const kLibrary = QV_LIBRARY;      // the library itself

}  // namespace qv_test
