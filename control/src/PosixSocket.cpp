#include "control/PosixSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "control/UnixSocket.h"

namespace tarnel {

void setNonBlocking(int fd, bool on) {
  const int flags = ::fcntl(fd, F_GETFL);
  ::fcntl(fd, F_SETFL, on ? flags | O_NONBLOCK : flags & ~O_NONBLOCK);
}

void raiseSocketBuffers(int fd) {
  constexpr int least = 16 << 10;
  for (const int which : {SO_SNDBUF, SO_RCVBUF}) {
    int bytes = 1 << 20;  // one system takes less by itself, another refuses and is asked for less
    while (::setsockopt(fd, SOL_SOCKET, which, &bytes, sizeof bytes) != 0 && bytes > least) {
      bytes /= 2;
    }
  }
}

#if defined(__linux__)

UniqueFd makeUnixStreamSocket() {
  return UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

UniqueFd acceptConnection(int listenFD) {
  return UniqueFd(::accept4(listenFD, nullptr, nullptr, SOCK_CLOEXEC));
}

std::optional<Pipe> makePipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{.readEnd = UniqueFd(ends[0]), .writeEnd = UniqueFd(ends[1])};
}

void setNoSIGPIPE(int) {}  // writeWithoutSignal carries MSG_NOSIGNAL instead

ssize_t writeWithoutSignal(int fd, BytesView bytes) {
  return ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

bool sleepUntilReadable(int fd, timeval limit) {
  pollfd watched{.fd = fd, .events = POLLIN, .revents = 0};
  const timespec most{.tv_sec = limit.tv_sec, .tv_nsec = limit.tv_usec * 1000};
  const bool unlimited = limit.tv_sec == 0 && limit.tv_usec == 0;
  const int ready = ::ppoll(&watched, 1, unlimited ? nullptr : &most, nullptr);
  if (ready == 0) errno = EAGAIN;
  // Any other failure is left to read(), which has its own words for it.
  return ready > 0 || (ready < 0 && errno != EINTR);
}

bool peerIsTrusted(int fd) {
  ucred peer{};
  socklen_t length = sizeof peer;
  if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) return false;
  return peer.uid == ::geteuid() || peer.uid == 0;
}

#else

namespace {
UniqueFd closedOnExec(int fd) {
  if (fd >= 0) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
  return UniqueFd(fd);
}
}  // namespace

UniqueFd makeUnixStreamSocket() {
  UniqueFd fd = closedOnExec(::socket(AF_UNIX, SOCK_STREAM, 0));
  // Set again once connected; by then the peer may have gone, and the option is refused.
  if (fd.valid()) setNoSIGPIPE(fd.get());
  return fd;
}

UniqueFd acceptConnection(int listenFD) {
  UniqueFd fd = closedOnExec(::accept(listenFD, nullptr, nullptr));
  if (fd.valid()) setNonBlocking(fd.get(), false);  // inherited from the listener here
  return fd;
}

std::optional<Pipe> makePipe() {
  int ends[2];
  if (::pipe(ends) != 0) return std::nullopt;
  return Pipe{.readEnd = closedOnExec(ends[0]), .writeEnd = closedOnExec(ends[1])};
}

void setNoSIGPIPE(int fd) {
  const int on = 1;
  ::setsockopt(fd, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
}

ssize_t writeWithoutSignal(int fd, BytesView bytes) {
  return ::write(fd, bytes.data(), bytes.size());
}

bool sleepUntilReadable(int, timeval) { return true; }  // read() does, with the socket's own limit

bool peerIsTrusted(int fd) {
  uid_t uid = 0;
  gid_t gid = 0;
  if (::getpeereid(fd, &uid, &gid) != 0) return false;
  return uid == ::geteuid() || uid == 0;
}

#endif

bool hasReadableByte(int fd) {
  // Finding nothing sets EAGAIN, which a later end of stream would pass off as a time limit
  // reached.
  const int kept = errno;
  char byte = 0;
  const bool found = ::recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
  errno = kept;
  return found;
}

}  // namespace tarnel
