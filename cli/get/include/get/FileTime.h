// Modification times in the host's unit: milliseconds, rounded down. Threads: pure.
#pragma once

#include <sys/stat.h>

#include <cstdint>

#include "get/CopyError.h"

namespace tarnel {

[[nodiscard]] std::int64_t modificationTimeMs(const struct stat& status);

// Sets the modification time of an open file or folder, and the access time with it.
[[nodiscard]] CopyResult<void> setModificationTime(int fd, std::int64_t mtimeMs);

}  // namespace tarnel
