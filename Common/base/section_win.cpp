#include <windows.h>

#include <new>

#include "base/section.h"

namespace qv {
namespace {
CRITICAL_SECTION* Native(std::byte* storage) { return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage)); }
}  // namespace

void Section::Open() {
  static_assert(sizeof(CRITICAL_SECTION) <= sizeof storage_);
  InitializeCriticalSection(new (storage_) CRITICAL_SECTION);
}
void Section::Close() { DeleteCriticalSection(Native(storage_)); }
void Section::Enter() { EnterCriticalSection(Native(storage_)); }
void Section::Leave() { LeaveCriticalSection(Native(storage_)); }

}  // namespace qv
