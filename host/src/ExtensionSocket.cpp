#include "host/ExtensionSocket.h"

#include <sys/stat.h>

#include <cerrno>

#include "control/ErrnoName.h"
#include "control/SocketPaths.h"
#include "control/UnixSocket.h"

namespace tarnel {
namespace {

using Kind = ExtensionSocketError::Kind;

bool isRefusal(int error) { return error == EPERM || error == EACCES; }

// What keeps the container's folder from being used, as an errno; 0 when it is there.
int containerError(const std::string& socketPath) {
  const std::string folder = socketPath.substr(0, socketPath.rfind('/'));
  struct stat status{};
  if (::stat(folder.c_str(), &status) != 0) return errno;
  return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

std::string tooLong(const std::string& path) {
  return path + ": too long for a socket, " + std::to_string(path.size()) + " bytes of at most " +
         std::to_string(maxSocketPathBytes) +
         ": the volume cannot be served to a user whose home is this long; `tarnel ls` and"
         " `tarnel cat` work (" +
         errnoName(ENAMETOOLONG) + ")";
}

}  // namespace

std::string description(const ExtensionSocketError& error) {
  switch (error.kind) {
    case Kind::noContainer:
      return error.path +
             ": the extension's container is not there: enable the extension and mount once,"
             " then start this host again";
    case Kind::keptOut:
      return error.path +
             ": the system keeps this program out of the extension's container: allow it when"
             " asked, or give the terminal Full Disk Access, then start this host again (" +
             errnoName(error.reason.error) + ")";
    case Kind::socket:
      return error.reason.kind == HostStartError::Kind::socketPathTooLong
                 ? tooLong(error.path)
                 : description(error.reason);
  }
  __builtin_unreachable();
}

bool isTaken(const ExtensionSocketError& error) {
  return error.kind == Kind::socket && (error.reason.kind == HostStartError::Kind::socketInUse ||
                                        error.reason.kind == HostStartError::Kind::notASocket);
}

std::expected<std::string, ExtensionSocketError> listenForExtension(ReferenceHost& host,
                                                                    std::string_view home) {
  const std::string path = TarnelFSKitSocket::hostPath(home);
  const auto failed = [&](Kind kind, HostStartError reason) {
    return std::unexpected(
        ExtensionSocketError{.kind = kind, .path = path, .reason = std::move(reason)});
  };
  const int error = containerError(path);
  if (error == ENOENT || error == ENOTDIR) return failed(Kind::noContainer, {});
  if (auto listening = host.listenAlso(path); !listening) {
    const HostStartError& reason = listening.error();
    const bool refused = reason.kind == HostStartError::Kind::socket && isRefusal(reason.error);
    return failed(refused ? Kind::keptOut : Kind::socket, reason);
  }
  return path;
}

}  // namespace tarnel
