#include <pthread.h>

#include <new>

#include "base/section.h"

namespace qv {
namespace {
pthread_mutex_t* Mutex(std::byte* storage) { return std::launder(reinterpret_cast<pthread_mutex_t*>(storage)); }
}  // namespace

void Section::Open() {
  static_assert(sizeof(pthread_mutex_t) <= sizeof storage_);
  auto* mutex = new (storage_) pthread_mutex_t;
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}
void Section::Close() { pthread_mutex_destroy(Mutex(storage_)); }
void Section::Enter() { pthread_mutex_lock(Mutex(storage_)); }
void Section::Leave() { pthread_mutex_unlock(Mutex(storage_)); }

}  // namespace qv
