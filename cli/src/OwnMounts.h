// Which devices are mounts of ours: the host leaves them out, or it would wait for itself.
#pragma once

#include <sys/types.h>

#include <functional>

#if defined(__linux__)
#include "fusefs/MountTable.h"
#elif defined(__APPLE__)
#include "DarwinMounts.h"
#endif

namespace tarnel {

[[nodiscard]] inline std::function<bool(dev_t)> ownMountTest() {
#if defined(__linux__) || defined(__APPLE__)
  return isOwnMount;
#else
  return nullptr;
#endif
}

}  // namespace tarnel
