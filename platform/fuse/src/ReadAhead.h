// How much of a file the kernel asks for before its reader does.
#pragma once

#include <string>

namespace tarnel {

inline constexpr unsigned readAheadKiB = 512;

// Raises the read-ahead of what is mounted on the folder from the kernel's 128 KiB, so that the
// host, the mount and the reader have work at the same time. Only root may; for others it stays as
// it is. Not before the kernel has its answer to INIT, which sets it anew.
void raiseReadAhead(const std::string& mountpoint);

}  // namespace tarnel
