#include "host/ShareTable.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "HostPlatform.h"
#include "control/Text.h"

namespace tarnel {
namespace {

using Kind = HostStartError::Kind;

// A message goes to a terminal as UTF-8, so a name that is not cannot be quoted.
std::optional<HostStartError> checkName(const std::string& name) {
  if (!isValidUtf8(name)) return HostStartError{Kind::unsafeName, "(not UTF-8)"};
  if (!isSafeName(name)) return HostStartError{Kind::unsafeName, name};
  return std::nullopt;
}

std::expected<UniqueFd, HostStartError> openFolder(const std::string& folder,
                                                   const IsOwnMount& isOwnMount) {
  UniqueFd fd(::open(folder.c_str(), directoryNamingFlags()));
  struct stat status;
  if (!fd.valid() || ::fstat(fd.get(), &status) != 0) {
    return std::unexpected(
        HostStartError{Kind::folder, folder, std::generic_category().message(errno)});
  }
  if (isOwnMount && isOwnMount(status.st_dev)) {
    return std::unexpected(HostStartError{Kind::ownMount, folder});
  }
  return fd;
}

}  // namespace

std::expected<ShareTable, HostStartError> ShareTable::open(
    const std::vector<ShareDefinition>& definitions, const IsOwnMount& isOwnMount) {
  ShareTable table;
  for (const auto& [peer, name, folder] : definitions) {
    if (auto bad = checkName(peer)) return std::unexpected(std::move(*bad));
    if (auto bad = checkName(name)) return std::unexpected(std::move(*bad));
    if (table.find(peer, name)) {
      return std::unexpected(HostStartError{Kind::duplicateName, peer + "/" + name});
    }
    auto root = openFolder(folder, isOwnMount);
    if (!root) return std::unexpected(std::move(root.error()));
    table.shares.push_back(std::make_shared<const Share>(Share{peer, name, std::move(*root)}));
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
