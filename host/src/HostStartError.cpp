#include "host/HostStartError.h"

#include <cerrno>
#include <system_error>

#include "control/ErrnoName.h"
#include "control/UnixSocket.h"
#include "host/SharePath.h"

namespace tarnel {
namespace {

bool isLocal(const HostStartError& error) { return error.peer == localPeer; }

std::string fullName(const HostStartError& error) {
  return "\"" + (isLocal(error) ? "" : error.peer + "/") + error.name + "\"";
}

// The option of the command that gives the folder a name.
std::string naming(const HostStartError& error) {
  return (isLocal(error) ? "--share NAME=" : "--peer PEER/NAME=") + error.path;
}

std::string nameOf(int error) { return " (" + errnoName(error) + ")"; }

std::string aboutFolder(const HostStartError& error) {
  switch (error.error) {
    case ENOENT:
      return "no such folder: make it first, or name another";
    case ENOTDIR:
      return "not a folder: name the folder that holds it";
    case EACCES:
    case EPERM:
      return "permission denied: share it as a user who may open it, or name another folder";
    default:
      return std::generic_category().message(error.error) + ": name another folder";
  }
}

std::string aboutSocket(const HostStartError& error) {
  if (error.error == ENOENT) {
    return "its folder does not exist: make it first, or choose another --socket";
  }
  return "cannot listen here, " + std::generic_category().message(error.error) +
         ": choose another --socket";
}

}  // namespace

std::string description(const HostStartError& error) {
  using Kind = HostStartError::Kind;
  const std::string about = error.path + ": ";
  switch (error.kind) {
    case Kind::unsafeName:
      return about + fullName(error) + " is not a usable name: give it one with " + naming(error);
    case Kind::duplicateName:
      return about + "another share has the same name " + fullName(error) +
             ": give this one its own with " + naming(error);
    case Kind::folder:
      return about + aboutFolder(error) + nameOf(error.error);
    case Kind::ownMount:
      return about + "lies on a mounted Tarnel volume: name a folder outside of it";
    case Kind::notASocket:
      return about + "exists and is not a socket: move it away, or choose another --socket";
    case Kind::socketInUse:
      return "another host already answers on " + error.path +
             ": stop it, or choose another --socket";
    case Kind::socketPathTooLong:
      return about + "too long for a socket, " + std::to_string(error.path.size()) +
             " bytes: choose a --socket of at most " + std::to_string(maxSocketPathBytes) +
             nameOf(ENAMETOOLONG);
    case Kind::socket:
      return about + aboutSocket(error) + nameOf(error.error);
  }
  __builtin_unreachable();
}

}  // namespace tarnel
