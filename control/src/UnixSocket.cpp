#include "control/UnixSocket.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include "UnixAddress.h"
#include "control/PosixSocket.h"
#include "control/UniqueFd.h"

namespace tarnel {

using Kind = UnixSocketError::Kind;

std::string description(const UnixSocketError& error) {
  const auto failed = [&](const char* call) {
    return std::string(call) + "() failed: " + std::generic_category().message(error.error);
  };
  switch (error.kind) {
    case Kind::pathTooLong:
      return "unix socket path too long: " + error.path;
    case Kind::create:
      return failed("socket");
    case Kind::bind:
      return failed("bind");
    case Kind::listen:
      return failed("listen");
    case Kind::connect:
      return failed("connect");
  }
  __builtin_unreachable();
}

bool canNameFile(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

std::expected<UnixAddress, UnixSocketError> makeAddr(const std::string& path) {
  if (path.size() > maxSocketPathBytes) {
    return std::unexpected(UnixSocketError{.kind = Kind::pathTooLong, .path = path});
  }
  UnixAddress made{};  // all zeros, the length byte of some systems included
  made.address.sun_family = AF_UNIX;
  std::memcpy(made.address.sun_path, path.data(), path.size());
  made.address.sun_path[path.size()] = '\0';
  made.length = sizeof made.address;
  return made;
}

std::expected<int, UnixSocketError> connectUnixSocket(const std::string& path) {
  if (!canNameFile(path)) return callFailed(Kind::connect, ENOENT);
  UniqueFd fd = makeUnixStreamSocket();
  if (!fd.valid()) return callFailed(Kind::create, errno);
  const auto address = makeAddr(path);
  if (!address) {
    (void)fd.release();  // left open on purpose, see the header
    return std::unexpected(address.error());
  }
  // A blocking connect waits without limit for a host whose backlog is full, and nothing can cancel
  // it; a non-blocking one fails with EAGAIN instead.
  setNonBlocking(fd.get(), true);
  if (::connect(fd.get(), address->get(), address->length) != 0) {
    return callFailed(Kind::connect, errno);
  }
  setNonBlocking(fd.get(), false);
  if (!peerIsTrusted(fd.get())) return callFailed(Kind::connect, EACCES);
  setNoSIGPIPE(fd.get());
  raiseSocketBuffers(fd.get());
  return fd.release();
}

}  // namespace tarnel
