#include "host/PathWalk.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include "HostPlatform.h"
#include "host/SharePath.h"

namespace tarnel {
namespace {

// path: what its path is to be.
HostResult<std::shared_ptr<const PathWalk::Directory>> openDirectoryAt(int parent, const char* name,
                                                                       std::string path) {
  auto opened = std::make_shared<PathWalk::Directory>();
  opened->fd = UniqueFd(::openat(parent, name, directoryNamingFlags() | O_NOFOLLOW));
  struct stat status;
  if (!opened->fd.valid() || ::fstat(opened->fd.get(), &status) != 0) {
    return std::unexpected(refusalFor(errno));
  }
  opened->id = fileId(status);
  opened->path = std::move(path);
  return opened;
}

}  // namespace

FileId fileId(const struct stat& status) { return {status.st_dev, status.st_ino}; }

// One look: the name and, instead of each link on the way, the names of the link's text.
class PathWalk::Step {
 public:
  explicit Step(const PathWalk& from) : walk(from), at{from.place, {}, {}, from.links} {}

  HostResult<Target> run(std::string_view name) {
    pending.emplace_back(name);
    while (!pending.empty()) {
      const std::string component = std::exchange(pending.back(), {});
      pending.pop_back();
      if (auto went = go(component); !went) return std::unexpected(went.error());
    }
    if (at.isDirectory()) {
      if (followed() && walk.isAbove(at.place.back()->id)) return missing();
      if (::fstat(at.directoryFD(), &at.status) != 0) return std::unexpected(refusalFor(errno));
    }
    return std::move(at);
  }

 private:
  using Outcome = HostResult<void>;

  static std::unexpected<Refusal> missing() { return std::unexpected(Refusal::noSuchFile); }
  bool followed() const { return at.links > walk.links; }

  Outcome go(const std::string& component) {
    if (!at.name.empty()) return missing();  // a link's text that goes on behind a file
    if (component.empty() || component == ".") return {};
    if (component == "..") return goUp();
    if (walk.hidden != nullptr && walk.hidden->hides(pathOf(component))) return missing();
    const int parent = at.directoryFD();
    if (::fstatat(parent, component.c_str(), &at.status, AT_SYMLINK_NOFOLLOW) != 0) {
      return std::unexpected(refusalFor(errno));
    }
    if (S_ISLNK(at.status.st_mode)) return followLink(parent, component);
    if (isForeign(at.status.st_dev)) return missing();
    if (S_ISDIR(at.status.st_mode)) return goDown(parent, component);
    if (!S_ISREG(at.status.st_mode)) return missing();
    at.name = component;
    return {};
  }

  Outcome goUp() {
    if (at.place.size() == 1) return missing();  // out of the share
    at.place.pop_back();
    return {};
  }

  Outcome goDown(int parent, const std::string& component) {
    auto opened = openDirectoryAt(parent, component.c_str(), pathOf(component));
    if (!opened) return std::unexpected(opened.error());
    if (isForeign((*opened)->id.device)) return missing();
    at.place.push_back(std::move(*opened));
    return {};
  }

  Outcome followLink(int parent, const std::string& component) {
    if (++at.links > maxLinks) return missing();
    std::array<char, PATH_MAX> text;
    const ssize_t length = ::readlinkat(parent, component.c_str(), text.data(), text.size());
    if (length < 0) return std::unexpected(refusalFor(errno));
    const std::string_view target(text.data(), static_cast<std::size_t>(length));
    // A text that fills the buffer may have been cut.
    if (target.empty() || target.front() == '/' || target.size() == text.size()) return missing();
    // "file/" means a directory, which "file/." says to go().
    if (target.back() == '/') pending.emplace_back(".");
    const std::size_t before = pending.size();
    for (std::string_view left = target; !left.empty();) pending.emplace_back(takeComponent(left));
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(before), pending.end());
    return {};
  }

  std::string pathOf(const std::string& component) const {
    const std::string& above = at.place.back()->path;
    return above.empty() ? component : above + "/" + component;
  }

  bool isForeign(dev_t device) const {
    return device != at.place.back()->id.device && *walk.isOwnMount && (*walk.isOwnMount)(device);
  }

  const PathWalk& walk;
  Target at;
  std::vector<std::string> pending;  // the next one last
};

HostResult<PathWalk> PathWalk::start(int rootFD, const IsOwnMount& isOwnMount,
                                     const HiddenPaths* hidden) {
  auto root = openDirectoryAt(rootFD, ".", {});
  if (!root) return std::unexpected(root.error());
  PathWalk walk(isOwnMount, hidden);
  walk.cameThrough.push_back((*root)->id);
  walk.place.push_back(std::move(*root));
  return walk;
}

HostResult<PathWalk::Target> PathWalk::look(std::string_view name) const {
  return Step(*this).run(name);
}

HostResult<PathWalk::Target> PathWalk::here() const { return look("."); }

HostResult<void> PathWalk::enter(std::string_view name) {
  auto target = look(name);
  if (!target) return std::unexpected(target.error());
  if (!target->isDirectory()) return std::unexpected(Refusal::notDirectory);
  place = std::move(target->place);
  links = target->links;
  cameThrough.push_back(place.back()->id);
  return {};
}

bool PathWalk::isAbove(FileId id) const {
  return std::find(cameThrough.begin(), cameThrough.end(), id) != cameThrough.end() ||
         std::any_of(place.begin(), place.end(),
                     [&](const auto& directory) { return directory->id == id; });
}

}  // namespace tarnel
