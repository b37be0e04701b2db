#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/faults.h"
#include "base/files.h"
#include "base/utf8_posix.h"

namespace qv {
namespace {

bool Refused() {
  if (!file_faults.Strikes()) return false;
  errno = EIO;
  return true;
}

using Path = std::array<char, 3 * 260 + 1>;  // a name of 260 UTF-16 units takes at most 3 bytes for each
bool MakePath(const QWChar* name, Path* path) {
  if (Utf8FromWide(name, *path)) return true;
  errno = ENAMETOOLONG;
  return false;
}

constexpr size_t kLargestStep = size_t{1} << 30;  // one call moves no more than 2 GiB

}  // namespace

bool File::Open(const QWChar* name, Disposition disposition) {
  Close();
  Path path;
  if (Refused() || !MakePath(name, &path)) return false;
  constexpr int kModes[] = {O_RDONLY, O_RDWR, O_WRONLY | O_CREAT | O_TRUNC};  // by disposition
  native_ = open(path.data(), kModes[static_cast<size_t>(disposition)] | O_CLOEXEC, 0666);
  struct stat status;
  if (!IsOpen() || (fstat(static_cast<int>(native_), &status) == 0 && !S_ISDIR(status.st_mode))) return IsOpen();
  Close();
  errno = EISDIR;
  return false;
}

bool File::Close() {
  if (!IsOpen()) return true;
  const int descriptor = static_cast<int>(native_);
  native_ = kClosed;
  return close(descriptor) == 0 && !Refused();
}

bool File::Read(void* bytes, size_t count, size_t* taken) {
  *taken = 0;
  while (*taken < count) {
    if (Refused()) return false;
    const ssize_t step =
        read(static_cast<int>(native_), static_cast<char*>(bytes) + *taken, std::min(count - *taken, kLargestStep));
    if (step == 0) break;
    if (step < 0 && errno == EINTR) continue;
    if (step < 0) return false;
    *taken += static_cast<size_t>(step);
  }
  return true;
}

bool File::Write(const void* bytes, size_t count) {
  for (size_t done = 0; done < count;) {
    if (Refused()) return false;
    const ssize_t step =
        write(static_cast<int>(native_), static_cast<const char*>(bytes) + done, std::min(count - done, kLargestStep));
    if (step < 0 && errno == EINTR) continue;
    if (step < 0) return false;
    done += static_cast<size_t>(step);
  }
  return true;
}

bool File::Seek(int64_t offset, Origin origin, int64_t* position) {
  constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (Refused()) return false;
  const off_t reached = lseek(static_cast<int>(native_), offset, kWhence[static_cast<size_t>(origin)]);
  if (reached >= 0 && position) *position = reached;
  return reached >= 0;
}

bool File::Exists(const QWChar* name) {
  Path path;
  struct stat status;
  return !Refused() && MakePath(name, &path) && stat(path.data(), &status) == 0;
}

}  // namespace qv
