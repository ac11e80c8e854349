// What connecting and listening share: the address of a Unix-domain socket, and the failure of a
// call.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <expected>
#include <string>

#include "control/UnixSocket.h"

namespace tarnel {

struct UnixAddress {
  sockaddr_un address;
  socklen_t length;  // of the whole structure, not of the path

  [[nodiscard]] const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }
};

// False for the paths that would reach something else than the file that they spell: on Linux an
// empty one binds in another name space, and an inner NUL ends the path early.
[[nodiscard]] bool canNameFile(const std::string& path);

// Fails with pathTooLong past maxSocketPathBytes.
[[nodiscard]] std::expected<UnixAddress, UnixSocketError> makeAddr(const std::string& path);

[[nodiscard]] inline std::unexpected<UnixSocketError> callFailed(UnixSocketError::Kind call,
                                                                 int error) {
  return std::unexpected(UnixSocketError{.kind = call, .path = {}, .error = error});
}

}  // namespace tarnel
