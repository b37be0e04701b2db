#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "base/faults.h"
#include "base/replacement.h"
#include "base/utf8_posix.h"

namespace qv {

struct Replacement::Names {
  char target[PATH_MAX];  // without links
  char part[PATH_MAX + 16];
};

namespace {

bool Refused() {
  if (!file_faults.Strikes()) return false;
  errno = EIO;
  return true;
}

// Access rights and owner of the old file, as far as the system allows.
bool TakeAccess(int descriptor, const char* target) {
  struct stat status;
  if (Refused() || stat(target, &status) != 0) return false;
  if (fchown(descriptor, status.st_uid, status.st_gid) != 0) errno = 0;
  return fchmod(descriptor, status.st_mode & 07777) == 0;
}

}  // namespace

Replacement::~Replacement() {
  static_cast<void>(file_.Close());
  if (names().part[0] != 0) unlink(names().part);
}

bool Replacement::Open(const QWChar* name) {
  static_assert(sizeof(Names) <= sizeof names_);
  char path[3 * 260 + 1];
  if (Refused() || !Utf8FromWide(name, path) || !realpath(path, names().target)) return false;
  std::snprintf(names().part, sizeof names().part, "%s.XXXXXX", names().target);
  file_.native_ = mkostemp(names().part, O_CLOEXEC);
  if (!file_.IsOpen()) names().part[0] = 0;
  return file_.IsOpen();
}

bool Replacement::Commit() {
  const int descriptor = static_cast<int>(file_.native_);
  if (!TakeAccess(descriptor, names().target) || Refused() || fsync(descriptor) != 0) return false;
  if (!file_.Close() || Refused() || std::rename(names().part, names().target) != 0) return false;
  names().part[0] = 0;
  return true;
}

}  // namespace qv
