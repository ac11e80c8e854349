#include "DarwinMounts.h"

#include <sys/mount.h>
#include <sys/param.h>

#include <cstddef>
#include <vector>

#include "control/SocketPaths.h"

namespace tarnel {
namespace {

std::vector<struct statfs> mounts() {
  std::vector<struct statfs> found;
  int count = ::getfsstat(nullptr, 0, MNT_NOWAIT);
  while (count >= 0) {
    found.resize(static_cast<std::size_t>(count) + 8);  // some may come meanwhile
    const int room = static_cast<int>(found.size());
    count = ::getfsstat(found.data(), room * static_cast<int>(sizeof(struct statfs)), MNT_NOWAIT);
    if (count < room) break;
  }
  found.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return found;
}

}  // namespace

std::string typeOfMount(const std::string& folder) {
  std::string type;
  for (const struct statfs& mount : mounts()) {
    if (folder == mount.f_mntonname) type = mount.f_fstypename;
  }
  return type;
}

bool isOwnMount(dev_t device) {
  for (const struct statfs& mount : mounts()) {
    if (static_cast<dev_t>(mount.f_fsid.val[0]) == device &&
        mount.f_fstypename == TarnelFSKitSocket::fileSystemType) {
      return true;
    }
  }
  return false;
}

}  // namespace tarnel
