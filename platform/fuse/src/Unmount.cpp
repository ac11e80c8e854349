#include "fusefs/Unmount.h"

#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "fusefs/MountTable.h"

extern char** environ;

namespace tarnel {
namespace {

// What mount(8)'s own helper does for users who are not root.
bool unmountWithHelper(const std::string& path, UnmountMode mode) {
  std::vector<const char*> arguments = {"fusermount3", "-q", "-u"};
  if (mode == UnmountMode::lazy) arguments.push_back("-z");
  arguments.push_back("--");
  arguments.push_back(path.c_str());
  arguments.push_back(nullptr);
  pid_t child = -1;
  if (::posix_spawnp(&child, arguments[0], nullptr, nullptr,
                     const_cast<char* const*>(arguments.data()), environ) != 0) {
    return false;
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

std::expected<void, std::string> unmountOwn(const std::string& path, UnmountMode mode) {
  const auto mount = mountAt(path);
  if (!mount) return std::unexpected(path + " is not a mountpoint");
  if (mount->type != mountType) {
    return std::unexpected(path + " is a mount of type " + mount->type + ", not one of ours");
  }
  const int flags = UMOUNT_NOFOLLOW | (mode == UnmountMode::lazy ? MNT_DETACH : 0);
  if (::umount2(path.c_str(), flags) == 0) return {};
  const int error = errno;
  if (error == EPERM && unmountWithHelper(path, mode)) return {};
  if (error == EBUSY || error == EPERM) {
    return std::unexpected(path + " is in use (EBUSY): close what is open there, or use --lazy");
  }
  return std::unexpected("cannot unmount " + path + ": " + std::generic_category().message(error));
}

bool cleanUpDeadMount(const std::string& path) {
  struct stat status{};
  if (::stat(path.c_str(), &status) == 0 || errno != ENOTCONN) return false;
  return unmountOwn(path, UnmountMode::lazy).has_value();
}

}  // namespace tarnel
