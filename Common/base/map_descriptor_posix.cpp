#include "base/map_descriptor_posix.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qv {

constinit MapDescriptor map_descriptor;

int MapDescriptor::Get() {
  const int number = number_.load(std::memory_order_acquire);
  return number >= 0 ? number : Open();
}

int MapDescriptor::Renew(int lost) {
  if (!IsOurs(lost)) number_.compare_exchange_strong(lost, kNone);
  return Get();
}

// A number may stand for a file of the host by now.
bool MapDescriptor::IsOurs(int number) const {
  struct stat status;
  return number >= 0 && fstat(number, &status) == 0 && status.st_dev == device_.load() &&
         status.st_ino == inode_.load();
}

void MapDescriptor::Close() {
  const int number = number_.exchange(kNone);
  if (IsOurs(number)) close(number);
}

int MapDescriptor::Open() {
  // A child of fork would see its parent's map through the descriptor: it opens its own.
  static const int at_fork = pthread_atfork(nullptr, nullptr, [] { map_descriptor.Close(); });
  if (at_fork != 0) return kNone;
  const int fresh = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  struct stat status;
  int expected = kNone;
  if (fresh < 0 || fstat(fresh, &status) != 0 || !number_.compare_exchange_strong(expected, fresh)) {
    if (fresh >= 0) close(fresh);
    return expected;  // another thread's, or none
  }
  device_.store(status.st_dev);
  inode_.store(status.st_ino);
  return fresh;
}

}  // namespace qv
