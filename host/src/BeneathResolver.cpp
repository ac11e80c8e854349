#include "host/BeneathResolver.h"

#include <fcntl.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "HostPlatform.h"
#include "host/SharePath.h"

namespace tarnel {
namespace {

// Never waits for a writer of a FIFO and never makes a terminal ours.
constexpr int readFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int listFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

HostResult<struct stat> statusOf(int fd) {
  struct stat status;
  if (::fstat(fd, &status) != 0) return std::unexpected(refusalFor(errno));
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    return std::unexpected(Refusal::noSuchFile);
  }
  return status;
}

HostResult<UniqueFd> regularFile(UniqueFd fd) {
  if (!fd.valid()) return std::unexpected(refusalFor(errno));
  const auto status = statusOf(fd.get());
  if (!status) return std::unexpected(status.error());
  if (S_ISDIR(status->st_mode)) return std::unexpected(Refusal::isDirectory);
  return fd;
}

}  // namespace

HostResult<struct stat> BeneathResolver::status(const std::string& path) const {
  const auto fd = tryDirectly(path, namingFlags());
  if (!fd) return std::unexpected(fd.error());
  if (fd->valid()) return statusOf(fd->get());
  const auto target = walkTo(path);
  if (!target) return std::unexpected(target.error());
  return target->status;
}

HostResult<UniqueFd> BeneathResolver::openFile(const std::string& path) const {
  auto fd = tryDirectly(path, readFlags);
  if (!fd) return std::unexpected(fd.error());
  if (fd->valid()) return regularFile(std::move(*fd));
  const auto target = walkTo(path);
  if (!target) return std::unexpected(target.error());
  if (target->isDirectory()) return std::unexpected(Refusal::isDirectory);
  return regularFile(
      UniqueFd(::openat(target->directoryFD(), target->name.c_str(), readFlags | O_NOFOLLOW)));
}

HostResult<UniqueFd> BeneathResolver::openDirectory(const std::string& path) const {
  auto fd = tryDirectly(path, listFlags);
  if (!fd || fd->valid()) return fd;
  const auto target = walkTo(path);
  if (!target) return std::unexpected(target.error());
  if (!target->isDirectory()) return std::unexpected(Refusal::notDirectory);
  UniqueFd opened(::openat(target->directoryFD(), ".", listFlags));
  if (!opened.valid()) return std::unexpected(refusalFor(errno));
  return opened;
}

HostResult<PathWalk> BeneathResolver::enter(const std::string& path) const {
  auto walk = PathWalk::start(rootFD, *isOwnMount, hidden);
  for (std::string_view left = path; walk && !left.empty();) {
    if (auto entered = walk->enter(takeComponent(left)); !entered) {
      return std::unexpected(entered.error());
    }
  }
  return walk;
}

// An invalid descriptor without a refusal means that the walk decides.
HostResult<UniqueFd> BeneathResolver::tryDirectly(const std::string& path, int flags) const {
  // A path may go through a link to something that is shown after all: the walk knows.
  if (road == Road::walkOnly || (hidden != nullptr && hidden->hides(path))) {
    return UniqueFd();
  }
  UniqueFd fd = openBeneath(rootFD, path.empty() ? "." : path.c_str(), flags);
  if (!fd.valid() && !mustWalk(errno)) return std::unexpected(refusalFor(errno));
  return fd;
}

HostResult<PathWalk::Target> BeneathResolver::walkTo(const std::string& path) const {
  const auto slash = path.rfind('/');
  const bool nested = slash != path.npos;
  const auto walk = enter(nested ? path.substr(0, slash) : std::string());
  if (!walk) return std::unexpected(walk.error());
  return path.empty() ? walk->here() : walk->look(path.substr(nested ? slash + 1 : 0));
}

}  // namespace tarnel
