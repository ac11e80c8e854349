#include "ReadAhead.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "control/UniqueFd.h"
#include "fusefs/MountTable.h"

namespace tarnel {

void raiseReadAhead(const std::string& mountpoint) {
  const auto mount = mountAt(mountpoint);
  if (!mount || mount->type != mountType) return;
  const std::string device =
      std::to_string(major(mount->device)) + ":" + std::to_string(minor(mount->device));
  const UniqueFd setting(
      ::open(("/sys/class/bdi/" + device + "/read_ahead_kb").c_str(), O_WRONLY | O_CLOEXEC));
  if (!setting.valid()) return;
  const std::string kib = std::to_string(readAheadKiB);
  (void)!::write(setting.get(), kib.data(), kib.size());
}

}  // namespace tarnel
