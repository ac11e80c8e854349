#include "SocketSite.h"

#include <sys/stat.h>

#include <cerrno>

#include "control/UniqueFd.h"
#include "control/UnixSocket.h"

namespace tarnel {
namespace {

// Only a refusal means that nobody listens. A full backlog, a listener of another user and whatever
// else keeps us from asking leave the socket to whom it belongs.
bool isStale(const UnixSocketError& error) {
  return error.kind == UnixSocketError::Kind::connect &&
         (error.error == ECONNREFUSED || error.error == ENOENT);
}

}  // namespace

std::optional<HostStartError> socketSiteError(const std::string& path) {
  using Kind = HostStartError::Kind;
  if (path.size() > maxSocketPathBytes) {
    return HostStartError{.kind = Kind::socketPathTooLong, .path = path};
  }
  struct stat status;
  if (::lstat(path.c_str(), &status) != 0) return std::nullopt;  // bind reports the rest
  if (!S_ISSOCK(status.st_mode)) return HostStartError{.kind = Kind::notASocket, .path = path};
  const auto connected = connectUnixSocket(path);
  if (connected) UniqueFd(*connected).reset();
  if (connected || !isStale(connected.error()))
    return HostStartError{.kind = Kind::socketInUse, .path = path};
  return std::nullopt;
}

}  // namespace tarnel
