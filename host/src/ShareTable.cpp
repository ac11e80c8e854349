#include "host/ShareTable.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "HostPlatform.h"
#include "control/Text.h"

namespace tarnel {
namespace {

using Kind = HostStartError::Kind;

HostStartError badName(Kind kind, const ShareDefinition& share) {
  return {.kind = kind, .path = share.folder, .peer = share.peer, .name = share.name};
}

std::shared_ptr<const Share> findIn(const std::vector<std::shared_ptr<const Share>>& shares,
                                    std::string_view peer, std::string_view name) {
  for (const auto& share : shares) {
    if (share->peer == peer && share->name == name) return share;
  }
  return nullptr;
}

}  // namespace

bool isUsableShareName(std::string_view name) { return isValidUtf8(name) && isSafeName(name); }

std::expected<UniqueFd, HostStartError> openSharedFolder(const std::string& folder,
                                                         const IsOwnMount& isOwnMount) {
  UniqueFd fd(::open(folder.c_str(), directoryNamingFlags()));
  struct stat status;
  if (!fd.valid() || ::fstat(fd.get(), &status) != 0) {
    return std::unexpected(HostStartError{.kind = Kind::folder, .path = folder, .error = errno});
  }
  // The descriptor only names the folder: whether it can be listed is a question of its own, and
  // better answered now than with an empty share.
  if (::faccessat(fd.get(), ".", R_OK | X_OK, AT_EACCESS) != 0) {
    return std::unexpected(HostStartError{.kind = Kind::folder, .path = folder, .error = errno});
  }
  if (isOwnMount && isOwnMount(status.st_dev)) {
    return std::unexpected(HostStartError{.kind = Kind::ownMount, .path = folder});
  }
  return fd;
}

std::expected<std::unique_ptr<ShareTable>, HostStartError> ShareTable::open(
    const std::vector<ShareDefinition>& definitions, const IsOwnMount& isOwnMount) {
  Shares opened;
  for (const ShareDefinition& wanted : definitions) {
    if (!isUsableShareName(wanted.peer) || !isUsableShareName(wanted.name)) {
      return std::unexpected(badName(Kind::unsafeName, wanted));
    }
    if (findIn(opened, wanted.peer, wanted.name)) {
      return std::unexpected(badName(Kind::duplicateName, wanted));
    }
    auto root = openSharedFolder(wanted.folder, isOwnMount);
    if (!root) return std::unexpected(std::move(root.error()));
    opened.push_back(std::make_shared<const Share>(
        Share{.peer = wanted.peer, .name = wanted.name, .root = std::move(*root)}));
  }
  auto table = std::make_unique<ShareTable>();
  MutexLock hold(table->lock);
  table->most = maxAdded + opened.size();
  table->shares = std::move(opened);
  return table;
}

HostResult<void> ShareTable::add(Share share) {
  auto added = std::make_shared<const Share>(std::move(share));
  MutexLock hold(lock);
  if (findIn(shares, added->peer, added->name)) return std::unexpected(Refusal::shareNameTaken);
  if (shares.size() >= most) return std::unexpected(Refusal::tooManyShares);
  shares.push_back(std::move(added));
  return {};
}

bool ShareTable::removeLocal(std::string_view name) {
  std::shared_ptr<const Share> removed;  // closed after the lock
  MutexLock hold(lock);
  removed = findIn(shares, localPeer, name);
  if (removed) std::erase(shares, removed);
  return removed != nullptr;
}

void ShareTable::removeAllLocal() {
  Shares removed;  // closed after the lock
  MutexLock hold(lock);
  for (const auto& share : shares) {
    if (share->isLocal()) removed.push_back(share);
  }
  std::erase_if(shares, [](const auto& share) { return share->isLocal(); });
}

std::shared_ptr<const Share> ShareTable::find(std::string_view peer, std::string_view name) const {
  MutexLock hold(lock);
  return findIn(shares, peer, name);
}

ShareTable::Shares ShareTable::all() const {
  MutexLock hold(lock);
  return shares;
}

std::vector<SourceShare> ShareTable::localShares() const {
  std::vector<SourceShare> local;
  for (const auto& share : all()) {
    if (share->isLocal()) local.push_back({.name = share->name, .isRemote = false});
  }
  return local;
}

std::vector<RemoteShareInfo> ShareTable::remoteShares() const {
  std::vector<RemoteShareInfo> remote;
  for (const auto& share : all()) {
    if (share->isLocal()) continue;
    remote.push_back({.peer = share->peer, .name = share->name, .isRemote = true});
  }
  return remote;
}

}  // namespace tarnel
