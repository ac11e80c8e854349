// Where one system's file calls differ from another's. The one source of this module with such
// differences.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "control/UniqueFd.h"

namespace tarnel {

// Opens `path` below `root` in one call, if it crosses no link and no mount on its way. Invalid
// with errno otherwise; see mustWalk.
[[nodiscard]] UniqueFd openBeneath(int root, const char* path, int flags);

// True when openBeneath could not decide: the path has a link or a mount in it, a file where a
// directory belongs, is too long for one call, or this system has no such call.
[[nodiscard]] bool mustWalk(int error);

// Flags for a descriptor that only names a file or a directory; the latter needs no read
// permission.
[[nodiscard]] int namingFlags();
[[nodiscard]] int directoryNamingFlags();

// Hands up to `length` bytes of a file to a socket without a copy in this process. What sendfile()
// returns: how many; 0 at the end of the file; negative with errno set, ENOSYS where there is no
// such call. May raise SIGPIPE, so that only threads that block it may call this.
[[nodiscard]] ssize_t sendFileBytes(int socketFD, int fd, std::int64_t offset, std::size_t length);

[[nodiscard]] timespec modificationTime(const struct stat& status);

}  // namespace tarnel
