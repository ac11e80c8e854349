#include "fusefs/Unmount.h"

#include <spawn.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>
#include <vector>

#include "HelperMessages.h"
#include "fusefs/MountTable.h"

extern char** environ;

namespace tarnel {
namespace {

// Runs the program with these arguments and waits for it; nullopt when it cannot be started.
std::optional<int> statusOf(const char* program, const std::vector<const char*>& arguments) {
  pid_t child = -1;
  if (::posix_spawnp(&child, program, nullptr, nullptr, const_cast<char* const*>(arguments.data()),
                     environ) != 0) {
    return std::nullopt;
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return std::nullopt;
  }
  return status;
}

// What mount(8)'s own helper does for users who are not root; the error is what it says.
std::expected<void, std::string> unmountWithHelper(const std::string& path, UnmountMode mode) {
  std::vector<const char*> arguments = {"fusermount3", "-u"};
  if (mode == UnmountMode::lazy) arguments.push_back("-z");
  arguments.push_back("--");
  arguments.push_back(path.c_str());
  arguments.push_back(nullptr);
  HelperMessages messages;
  auto status = statusOf("fusermount3", arguments);
  if (!status) status = statusOf("/usr/bin/fusermount3", arguments);
  const std::string said = messages.take();
  if (status && WIFEXITED(*status) && WEXITSTATUS(*status) == 0) return {};
  if (!status)
    return std::unexpected("only root can, or fusermount3, which is not installed (EPERM)");
  return std::unexpected(said.empty() ? "fusermount3 failed" : said);
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
  if (error == EPERM) {
    const auto unmounted = unmountWithHelper(path, mode);
    if (unmounted || !mountAt(path)) return {};
    return std::unexpected("cannot unmount " + path + ": " + unmounted.error());
  }
  if (error == EBUSY) {
    return std::unexpected(path + " is in use (EBUSY): close what is open there, or use --lazy");
  }
  return std::unexpected("cannot unmount " + path + ": " + std::generic_category().message(error));
}

bool cleanUpDeadMount(const std::string& path) {
  // Not stat(2), which the kernel answers for as long as it keeps attributes.
  struct statvfs status{};
  if (::statvfs(path.c_str(), &status) == 0 || errno != ENOTCONN) return false;
  return unmountOwn(path, UnmountMode::lazy).has_value();
}

}  // namespace tarnel
