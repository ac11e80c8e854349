// Unix-domain stream sockets: the client's connect, and the error of socket set-up.
#pragma once

#include <cstddef>
#include <expected>
#include <string>

namespace tarnel {

struct UnixSocketError {
  enum class Kind { pathTooLong, create, bind, listen, connect };
  Kind kind;
  std::string path;  // pathTooLong only
  int error = 0;     // errno, for all the others

  friend bool operator==(const UnixSocketError&, const UnixSocketError&) = default;
};
// The fixed text: "unix socket path too long: " + path, "connect() failed: " + errno's text, ...
[[nodiscard]] std::string description(const UnixSocketError& error);

// At most this many UTF-8 bytes on every system: the path field of 104 bytes less its final zero.
inline constexpr std::size_t maxSocketPathBytes = 103;

// A connected, blocking descriptor that the caller closes; it cannot raise SIGPIPE.
// Never waits: a full backlog is connect(EAGAIN). A listener that runs as neither this user nor
// root is refused with connect(EACCES). A path that is too long leaves the new descriptor open, on
// purpose: that is how every implementation of this protocol behaves. An empty path and one with an
// inner NUL are connect(ENOENT).
[[nodiscard]] std::expected<int, UnixSocketError> connectUnixSocket(const std::string& path);

// Makes a write to a peer that has gone fail with EPIPE instead of raising SIGPIPE. On systems
// without the socket option every write of this library carries the flag instead and this does
// nothing.
void setNoSIGPIPE(int fd);

}  // namespace tarnel
