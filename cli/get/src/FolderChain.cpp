#include "get/FolderChain.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "fs/FabricLocation.h"
#include "get/FileTime.h"

namespace tarnel {
namespace {

constexpr mode_t permissions = 0777;
constexpr int openFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

UniqueFd openIn(int folder, const std::string& name) {
  UniqueFd fd(::openat(folder, name.c_str(), openFolder));
  if (!fd.valid() && errno == ELOOP) errno = ENOTDIR;  // a link: the same on every system
  return fd;
}

}  // namespace

FolderChain::FolderChain(UniqueFd root, const Options& chosen) : options(chosen) {
  levels.push_back({.name = {}, .fd = std::move(root)});
}

FolderChain::~FolderChain() { leaveAll(); }

CopyResult<void> FolderChain::enter(const EntryPath& path, std::size_t depth) {
  std::size_t common = 0;
  while (common < depth && common + 1 < levels.size() && levels[common + 1].name == path[common]) {
    ++common;
  }
  CopyResult<void> outcome = goBackTo(common);
  for (std::size_t i = common; outcome && i < depth; ++i) outcome = step(path[i], std::nullopt);
  return outcome;
}

CopyResult<void> FolderChain::enterAnnounced(const EntryPath& path, const FolderLook& look) {
  if (auto outcome = enter(path, path.size() - 1); !outcome) return outcome;
  if (auto outcome = step(path.back(), look.mode); !outcome) return outcome;
  Level& level = levels.back();
  level.mtimeMs = look.mtimeMs;
  if (look.mode && (level.made || options.restoresModes)) {
    level.finalMode = *look.mode & permissions & ~options.mask;
  }
  return {};
}

void FolderChain::leaveAll() {
  while (levels.size() > 1) leaveLast();
}

bool FolderChain::take(std::string_view name) {
  auto& taken = levels.back().taken;
  const std::size_t hash = std::hash<std::string_view>()(name);
  return taken.size() < maxRemembered ? taken.insert(hash).second : !taken.contains(hash);
}

void FolderChain::spoil() { levels.back().mtimeMs.reset(); }

void FolderChain::abandon() {
  for (Level& level : levels) level.mtimeMs.reset();
  leaveAll();
}

bool FolderChain::makeWritable() {
  Level& level = levels.back();
  struct stat status{};
  if (levels.size() == 1 || ::fstat(level.fd.get(), &status) != 0) return false;
  if ((status.st_mode & 0700) == 0700) return false;  // that is not what is in the way
  if (::fchmod(level.fd.get(), (status.st_mode & 07777) | 0700) != 0) return false;
  if (!level.finalMode) level.finalMode = status.st_mode & permissions;
  return true;
}

CopyResult<void> FolderChain::goBackTo(std::size_t depth) {
  while (levels.size() > depth + 1) leaveLast();
  return reopen(depth);
}

CopyResult<void> FolderChain::step(std::string_view name, std::optional<mode_t> hostMode) {
  if (levels.size() > maxDepth) return copyFailure(ENAMETOOLONG);
  const int parent = folder();
  Level level{.name = std::string(name), .fd = openIn(parent, level.name)};
  if (!level.fd.valid() && errno == ENOENT) {
    const mode_t mode = hostMode.value_or(permissions) & permissions;
    int made = ::mkdirat(parent, level.name.c_str(), mode | 0700);
    if (made != 0 && errno == EACCES && makeWritable()) {
      made = ::mkdirat(parent, level.name.c_str(), mode | 0700);
    }
    if (made != 0) return callFailure();
    level.made = true;
    level.fd = openIn(parent, level.name);
  }
  if (!level.fd.valid()) return callFailure();
  if (!level.made && !hostMode) {
    // Nobody has said how this folder is to look: as it does now, whatever is written in it.
    struct stat status{};
    if (::fstat(level.fd.get(), &status) == 0) level.mtimeMs = modificationTimeMs(status);
  }
  levels.push_back(std::move(level));
  if (levels.size() > maxOpen + 1) levels[levels.size() - 1 - maxOpen].fd.reset();
  return {};
}

void FolderChain::leaveLast() {
  CopyResult<void> outcome = reopen(levels.size() - 1);
  if (outcome) outcome = finish(levels.back());
  if (!outcome && options.onUnfinished) {
    std::string relpath;
    for (const Level& level : levels) relpath = childPath(relpath, level.name);
    options.onUnfinished(relpath, outcome.error());
  }
  levels.pop_back();
}

CopyResult<void> FolderChain::finish(const Level& level) const {
  if (!level.finalMode && !level.mtimeMs) return {};
  struct stat status{};
  if (::fstat(level.fd.get(), &status) != 0) return callFailure();
  if (level.finalMode && (status.st_mode & permissions) != *level.finalMode) {
    // A group that is handed down is this file system's own business and stays.
    const mode_t kept = status.st_mode & 07777 & ~permissions;
    if (::fchmod(level.fd.get(), kept | *level.finalMode) != 0) return callFailure();
  }
  if (level.mtimeMs && modificationTimeMs(status) != *level.mtimeMs) {
    return setModificationTime(level.fd.get(), *level.mtimeMs);
  }
  return {};
}

CopyResult<void> FolderChain::reopen(std::size_t target) {
  if (levels[target].fd.valid()) return {};
  UniqueFd opened;
  int at = levels[0].fd.get();
  for (std::size_t i = 1; i <= target; ++i) {
    UniqueFd next = openIn(at, levels[i].name);
    if (!next.valid()) return callFailure();
    opened = std::move(next);
    at = opened.get();
  }
  levels[target].fd = std::move(opened);
  return {};
}

}  // namespace tarnel
