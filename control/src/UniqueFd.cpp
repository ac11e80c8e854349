#include "control/UniqueFd.h"

#include <unistd.h>

#include <cerrno>

namespace tarnel {

void UniqueFd::reset(int descriptor) {
  const int old = std::exchange(fd, descriptor);
  if (old < 0) return;
  const int kept = errno;
  ::close(old);
  errno = kept;
}

}  // namespace tarnel
