// From the volume's answers to the kernel's.
#pragma once

#define FUSE_USE_VERSION 314
#include <fuse_lowlevel.h>
#include <sys/stat.h>

#include <cstdint>

#include "seam/ItemAttributes.h"
#include "seam/VolumeError.h"

namespace tarnel {

// This system's number for a volume's error, whose own numbers are Darwin's.
[[nodiscard]] int systemErrno(VolumeError error);

// The status of an item. Nanoseconds are made non-negative: -1500 ms is -2 s and 500,000,000 ns.
[[nodiscard]] struct stat systemStat(const ItemAttributes& attributes);

}  // namespace tarnel
