// The address of a Unix-domain socket.
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

// Fails with pathTooLong past maxSocketPathBytes.
[[nodiscard]] std::expected<UnixAddress, UnixSocketError> makeAddr(const std::string& path);

}  // namespace tarnel
