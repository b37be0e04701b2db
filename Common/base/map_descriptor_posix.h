// One descriptor of the process's own memory map, kept between tests.
#pragma once

#include <sys/types.h>

#include <atomic>

namespace qv {

class MapDescriptor {
 public:
  int Get();            // below 0: there is none to be had
  int Renew(int lost);  // `lost` no longer serves: a host may close every descriptor that it finds
  void Close();

 private:
  static constexpr int kNone = -1;
  int Open();
  bool IsOurs(int number) const;

  std::atomic<int> number_{kNone};
  std::atomic<dev_t> device_{0};
  std::atomic<ino_t> inode_{0};
};
extern constinit MapDescriptor map_descriptor;

}  // namespace qv
