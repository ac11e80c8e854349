#include "HostAbsence.h"

#include <cerrno>

#include "control/ErrnoName.h"
#include "control/UniqueFd.h"
#include "control/UnixSocket.h"

namespace tarnel {
namespace {

std::string absence(const std::string& path, const UnixSocketError& error) {
  const std::string name = " (" + errnoName(error.error) + ")";
  if (error.kind != UnixSocketError::Kind::connect) return path + ": " + description(error);
  switch (error.error) {
    case EACCES:
    case EPERM:
      return path + ": the host there is another user's: choose another --socket" + name;
    case EAGAIN:
      return path + ": the host there takes no more connections: try again later" + name;
    default:
      return "no host answers on " + path + name + ": start one with `tarnel host DIR`";
  }
}

}  // namespace

std::optional<std::string> whyNoHost(const std::string& socketPath) {
  // Not left to the connect, which leaves a descriptor behind for this.
  if (socketPath.size() > maxSocketPathBytes) {
    return socketPath + ": too long for a socket, " + std::to_string(socketPath.size()) +
           " bytes: choose a --socket of at most " + std::to_string(maxSocketPathBytes);
  }
  const auto fd = connectUnixSocket(socketPath);
  if (!fd) return absence(socketPath, fd.error());
  const UniqueFd closed(*fd);
  return std::nullopt;
}

std::string hostFailure(const std::string& socketPath, const std::string& reason) {
  return whyNoHost(socketPath)
      .value_or("the host on " + socketPath + " gives no usable answer (" + reason +
                "): start another with `tarnel host DIR`");
}

}  // namespace tarnel
