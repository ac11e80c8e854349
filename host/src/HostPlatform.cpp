#include "HostPlatform.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#if defined(__linux__)
#include <linux/openat2.h>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#endif

namespace tarnel {

#if defined(__linux__)

UniqueFd openBeneath(int root, const char* path, int flags) {
  open_how how{};
  how.flags = static_cast<unsigned>(flags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS | RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV;
  return UniqueFd(static_cast<int>(::syscall(SYS_openat2, root, path, &how, sizeof how)));
}

int namingFlags() { return O_PATH | O_CLOEXEC; }
int directoryNamingFlags() { return O_PATH | O_DIRECTORY | O_CLOEXEC; }

ssize_t sendFileBytes(int socketFD, int fd, std::int64_t offset, std::size_t length) {
  off_t from = offset;
  return ::sendfile(socketFD, fd, &from, length);
}

timespec modificationTime(const struct stat& status) { return status.st_mtim; }

#else

UniqueFd openBeneath(int, const char*, int) {
  errno = ENOSYS;
  return UniqueFd();
}

int namingFlags() { return O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC; }
int directoryNamingFlags() { return O_RDONLY | O_DIRECTORY | O_CLOEXEC; }

ssize_t sendFileBytes(int, int, std::int64_t, std::size_t) {
  errno = ENOSYS;
  return -1;
}

timespec modificationTime(const struct stat& status) { return status.st_mtimespec; }

#endif

bool mustWalk(int error) {
  switch (error) {
    case ELOOP:
    case EXDEV:
    case ENOTDIR:
    case ENAMETOOLONG:
    case EAGAIN:
    case ENOSYS:
    case EPERM:  // sandboxes refuse calls that they do not know with this
      return true;
    default:
      return false;
  }
}

}  // namespace tarnel
