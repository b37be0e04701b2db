#include "ImageFile/file_window.h"

#include <cstring>

namespace qv {

bool FileWindow::See(size_t bytes) {
  if (filled_ - at_ >= bytes) return true;
  std::memmove(buffer_.get(), buffer_.get() + at_, filled_ - at_);
  filled_ -= at_;
  at_ = 0;
  size_t taken = 0;
  if (!file_.Read(buffer_.get() + filled_, capacity_ - filled_, &taken)) return false;
  filled_ += taken;
  return filled_ >= bytes;
}

}  // namespace qv
