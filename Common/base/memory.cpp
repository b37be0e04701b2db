#include "base/memory.h"

#include <cassert>
#include <cstdlib>
#include <mutex>

#include "base/faults.h"
#include "base/sizes.h"

namespace qv {
namespace {

enum class Form : uint32_t { kBlock = 0x6B6C6221, kImage = 0x676D6921, kReleased = 0 };

// Stands before every block and links it into the ledger.
struct alignas(std::max_align_t) Entry {
  Entry* next;
  Entry* previous;
  size_t bytes;
  const char* file;
  uint32_t line;
  Form form;
};

struct LedgerState {
  std::mutex mutex;
  Entry* newest = nullptr;
  LedgerTotals totals{};

  void Link(Entry* entry) {
    const std::lock_guard lock(mutex);
    entry->previous = nullptr;
    entry->next = newest;
    if (newest) newest->previous = entry;
    newest = entry;
    ++totals.blocks;
    totals.bytes += entry->bytes;
  }
  void Unlink(Entry* entry) {
    const std::lock_guard lock(mutex);
    (entry->previous ? entry->previous->next : newest) = entry->next;
    if (entry->next) entry->next->previous = entry->previous;
    --totals.blocks;
    totals.bytes -= entry->bytes;
  }
};
LedgerState ledger;

Entry* EntryOf(void* block, [[maybe_unused]] Form form) {
  Entry* entry = static_cast<Entry*>(block) - 1;
  assert(entry->form == form);
  return entry;
}

void* Obtain(size_t bytes, Form form, const Where& where) {
  const size_t whole = Sum(bytes, sizeof(Entry));
  auto* entry = static_cast<Entry*>(whole == SIZE_MAX ? nullptr : std::calloc(whole, 1));
  if (!entry) return nullptr;
  entry->bytes = bytes;
  entry->file = where.file;
  entry->line = where.line;
  entry->form = form;
  ledger.Link(entry);
  return entry + 1;
}

void* ResizeForm(void* block, size_t bytes, Form form, const Where& where) {
  if (!block) return Obtain(bytes, form, where);
  const size_t whole = Sum(bytes, sizeof(Entry));
  if (whole == SIZE_MAX) return nullptr;
  Entry* entry = EntryOf(block, form);
  const size_t old_bytes = entry->bytes;
  ledger.Unlink(entry);
  auto* resized = static_cast<Entry*>(std::realloc(entry, whole));
  if (!resized) {
    ledger.Link(entry);
    return nullptr;
  }
  resized->bytes = bytes;
  resized->file = where.file;
  resized->line = where.line;
  ledger.Link(resized);
  auto* begin = reinterpret_cast<uint8_t*>(resized + 1);
  for (size_t i = old_bytes; i < bytes; ++i) begin[i] = 0;
  return begin;
}

void GiveBack(void* block, Form form) {
  if (!block) return;
  Entry* entry = EntryOf(block, form);
  ledger.Unlink(entry);
  entry->form = Form::kReleased;
  std::free(entry);
}

}  // namespace

void* Allocate(size_t size, size_t count, Where where) {
  return allocation_faults.Strikes() ? nullptr : Obtain(Product(size, count), Form::kBlock, where);
}
void* Resize(void* block, size_t bytes, Where where) {
  return allocation_faults.Strikes() ? nullptr : ResizeForm(block, bytes, Form::kBlock, where);
}
void Release(void* block) { GiveBack(block, Form::kBlock); }

void* AllocateImage(size_t size, Where where) {
  return allocation_faults.Strikes() ? nullptr : Obtain(size, Form::kImage, where);
}
void* ResizeImage(void* image, size_t size, Where where) {
  return allocation_faults.Strikes() ? nullptr : ResizeForm(image, size, Form::kImage, where);
}
void ReleaseImage(void* image) { GiveBack(image, Form::kImage); }

size_t BytesOf(const void* block) { return block ? (static_cast<const Entry*>(block) - 1)->bytes : 0; }

LedgerTotals Ledger() {
  const std::lock_guard lock(ledger.mutex);
  return ledger.totals;
}

void ListLedger(void (*visit)(const LedgerEntry& entry, void* user), void* user) {
  const std::lock_guard lock(ledger.mutex);
  for (const Entry* entry = ledger.newest; entry; entry = entry->next) {
    visit({entry->bytes, entry->file, entry->line}, user);
  }
}

}  // namespace qv
