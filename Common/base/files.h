// Files by wide names: every name that the system can hold. Failures leave their reason in the system's last error.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "Qvclr15x.h"

namespace qv {

enum class Disposition : uint8_t {
  kReadExisting,  // for reading; the file must exist
  kEditExisting,  // for reading and writing; the file must exist
  kCreateAlways,  // for writing; an existing file is emptied
};
enum class Origin : uint8_t { kStart, kCurrent, kEnd };

class File {
 public:
  File() = default;
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool Open(const QWChar* name, Disposition disposition);
  bool IsOpen() const { return native_ != kClosed; }
  bool Close();  // true too when nothing was open

  // A read past the end is no failure: `*taken` tells what there was.
  bool Read(void* bytes, size_t count, size_t* taken);
  bool Write(const void* bytes, size_t count);
  bool Seek(int64_t offset, Origin origin, int64_t* position = nullptr);

  static bool Exists(const QWChar* name);

 private:
  friend class Replacement;
  static constexpr intptr_t kClosed = -1;
  intptr_t native_ = kClosed;
};

// For a name in a record's field, which must hold its terminator too.
inline bool NamesExistingFile(std::span<const QWChar> field) {
  return std::ranges::find(field, QWChar{0}) != field.end() && File::Exists(field.data());
}

}  // namespace qv
