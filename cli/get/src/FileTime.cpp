#include "get/FileTime.h"

#include <ctime>

namespace tarnel {

// The one place of this module where systems differ.
std::int64_t modificationTimeMs(const struct stat& status) {
#if defined(__linux__)
  const timespec& time = status.st_mtim;
#else
  const timespec& time = status.st_mtimespec;
#endif
  return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

CopyResult<void> setModificationTime(int fd, std::int64_t mtimeMs) {
  std::int64_t seconds = mtimeMs / 1000;
  std::int64_t rest = mtimeMs % 1000;
  if (rest < 0) {
    rest += 1000;
    --seconds;
  }
  const timespec time{.tv_sec = seconds, .tv_nsec = rest * 1'000'000};
  const timespec times[2] = {time, time};
  if (::futimens(fd, times) != 0) return callFailure();
  return {};
}

}  // namespace tarnel
