#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/map_descriptor_posix.h"
#include "base/readable_posix.h"

namespace qv {
namespace {

// linux/fs.h has these from 6.11 on; older headers do not know them.
struct MapQuery {
  uint64_t size, query_flags, query_addr;
  uint64_t vma_start, vma_end, vma_flags, vma_page_size, vma_offset, inode;
  uint32_t dev_major, dev_minor, vma_name_size, build_id_size;
  uint64_t vma_name_addr, build_id_addr;
};
static_assert(sizeof(MapQuery) == 104);
constexpr unsigned long kMapQuery = _IOWR('f', 17, MapQuery);
constexpr uint64_t kReadFlag = 1, kWriteFlag = 2;
constexpr int kPopulateRead = 22, kPopulateWrite = 23;  // MADV_POPULATE_READ, MADV_POPULATE_WRITE

// The mapping that holds `address`: kNo when there is none.
Verdict FindMapping(uintptr_t address, Mapping* mapping) {
  int descriptor = map_descriptor.Get();
  for (int attempt = 0; attempt < 2; ++attempt) {
    MapQuery query{};
    query.size = sizeof query;
    query.query_addr = address;
    if (ioctl(descriptor, kMapQuery, &query) == 0) {
      *mapping = {query.vma_start, query.vma_end, (query.vma_flags & kReadFlag) != 0,
                  (query.vma_flags & kWriteFlag) != 0};
      return Verdict::kYes;
    }
    if (errno == ENOENT) return Verdict::kNo;
    if (attempt == 0) descriptor = map_descriptor.Renew(descriptor);
  }
  return Verdict::kUnknown;
}

}  // namespace

Verdict AskKernelMap(uintptr_t begin, uintptr_t end, Access access, Mapping* last) {
  static constinit std::atomic<bool> unknown_to_kernel{false};
  if (unknown_to_kernel.load(std::memory_order_relaxed)) return Verdict::kUnknown;
  while (begin < end) {
    const Verdict found = FindMapping(begin, last);
    if (found == Verdict::kUnknown && errno == ENOTTY) {
      unknown_to_kernel.store(true, std::memory_order_relaxed);
      map_descriptor.Close();
    }
    if (found != Verdict::kYes) return found;
    if (!(access == Access::kWrite ? last->writable : last->readable)) return Verdict::kNo;
    begin = last->end;
  }
  return Verdict::kYes;
}

void CloseKernelMap() { map_descriptor.Close(); }

Verdict AskByPopulating(uintptr_t begin, uintptr_t end, Access access) {
  static const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const uintptr_t first = begin & ~(page - 1);
  const uintptr_t last = (end - 1) & ~(page - 1);
  const uintptr_t bytes = last - first + page;
  if (bytes == 0) return Verdict::kUnknown;  // all that there is
  const int advice = access == Access::kWrite ? kPopulateWrite : kPopulateRead;
  if (madvise(reinterpret_cast<void*>(first), bytes, advice) == 0) return Verdict::kYes;
  // A fault is told where a page refuses the access. Whatever else is told has other causes too: devices, kernels that
  // do not know the advice, a lack of memory.
  return errno == EFAULT ? Verdict::kNo : Verdict::kUnknown;
}

Verdict AskMapText(uintptr_t begin, uintptr_t end, Access access) {
  std::FILE* maps = std::fopen("/proc/self/maps", "re");
  if (!maps) return Verdict::kUnknown;
  char piece[512];
  bool at_line_start = true;  // long file names make a line come in several pieces
  bool refused = false;
  while (begin < end && !refused && std::fgets(piece, sizeof piece, maps)) {
    unsigned long from = 0, to = 0;
    char read = '-', write = '-';
    if (at_line_start && std::sscanf(piece, "%lx-%lx %c%c", &from, &to, &read, &write) == 4 && to > begin) {
      refused = from > begin || (access == Access::kWrite ? write != 'w' : read != 'r');
      begin = to;
    }
    at_line_start = std::strchr(piece, '\n') != nullptr;
  }
  std::fclose(maps);
  return !refused && begin >= end ? Verdict::kYes : Verdict::kNo;
}

}  // namespace qv
