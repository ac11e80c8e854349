#include "host/ShareTable.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "HostPlatform.h"
#include "control/Text.h"

namespace tarnel {
namespace {

using Kind = HostStartError::Kind;

bool isUsable(const std::string& name) { return isValidUtf8(name) && isSafeName(name); }

HostStartError badName(Kind kind, const ShareDefinition& share) {
  return {.kind = kind, .path = share.folder, .peer = share.peer, .name = share.name};
}

std::expected<UniqueFd, HostStartError> openFolder(const std::string& folder,
                                                   const IsOwnMount& isOwnMount) {
  UniqueFd fd(::open(folder.c_str(), directoryNamingFlags()));
  struct stat status;
  if (!fd.valid() || ::fstat(fd.get(), &status) != 0) {
    return std::unexpected(HostStartError{.kind = Kind::folder, .path = folder, .error = errno});
  }
  if (isOwnMount && isOwnMount(status.st_dev)) {
    return std::unexpected(HostStartError{.kind = Kind::ownMount, .path = folder});
  }
  return fd;
}

}  // namespace

std::expected<ShareTable, HostStartError> ShareTable::open(
    const std::vector<ShareDefinition>& definitions, const IsOwnMount& isOwnMount) {
  ShareTable table;
  for (const ShareDefinition& wanted : definitions) {
    if (!isUsable(wanted.peer) || !isUsable(wanted.name)) {
      return std::unexpected(badName(Kind::unsafeName, wanted));
    }
    if (table.find(wanted.peer, wanted.name)) {
      return std::unexpected(badName(Kind::duplicateName, wanted));
    }
    auto root = openFolder(wanted.folder, isOwnMount);
    if (!root) return std::unexpected(std::move(root.error()));
    table.shares.push_back(
        std::make_shared<const Share>(Share{wanted.peer, wanted.name, std::move(*root)}));
  }
  return table;
}

std::shared_ptr<const Share> ShareTable::find(std::string_view peer, std::string_view name) const {
  for (const auto& share : shares) {
    if (share->peer == peer && share->name == name) return share;
  }
  return nullptr;
}

std::vector<SourceShare> ShareTable::localShares() const {
  std::vector<SourceShare> local;
  for (const auto& share : shares) {
    if (share->isLocal()) local.push_back({.name = share->name, .isRemote = false});
  }
  return local;
}

std::vector<RemoteShareInfo> ShareTable::remoteShares() const {
  std::vector<RemoteShareInfo> remote;
  for (const auto& share : shares) {
    if (share->isLocal()) continue;
    remote.push_back({.peer = share->peer, .name = share->name, .isRemote = true});
  }
  return remote;
}

}  // namespace tarnel
