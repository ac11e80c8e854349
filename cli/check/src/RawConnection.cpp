#include "RawConnection.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "control/ControlWire.h"
#include "control/PosixSocket.h"
#include "control/UnixSocket.h"

namespace tarnel {
namespace {

constexpr std::chrono::milliseconds backlogPause{5};

int millisecondsUntil(Deadline deadline) {
  using std::chrono::milliseconds;
  const auto left = deadline - std::chrono::steady_clock::now();
  // Rounded up: a wait that ends before the deadline would be made anew, again and again.
  const auto whole = std::chrono::ceil<milliseconds>(left).count();
  return static_cast<int>(std::clamp<milliseconds::rep>(whole, 0, 3'600'000));
}

bool isFullBacklog(const UnixSocketError& error) {
  return error.kind == UnixSocketError::Kind::connect && error.error == EAGAIN;
}

}  // namespace

std::expected<RawConnection, std::string> RawConnection::open(const std::string& socketPath,
                                                              Deadline deadline) {
  while (true) {
    const auto fd = connectUnixSocket(socketPath);
    if (fd) {
      setNonBlocking(*fd, true);
      return RawConnection(*fd);
    }
    const bool isLate = std::chrono::steady_clock::now() >= deadline;
    if (isLate || !isFullBacklog(fd.error())) return std::unexpected(description(fd.error()));
    ::poll(nullptr, 0, static_cast<int>(backlogPause.count()));
  }
}

bool RawConnection::wait(short events, Deadline deadline) const {
  pollfd watched{.fd = fd.get(), .events = events, .revents = 0};
  while (true) {
    const int ready = ::poll(&watched, 1, millisecondsUntil(deadline));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

bool RawConnection::send(BytesView bytes, Deadline deadline) {
  while (!bytes.empty()) {
    const ssize_t sent = writeWithoutSignal(fd.get(), bytes);
    if (sent > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      if (!wait(POLLOUT, deadline)) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

std::expected<void, WireFault> RawConnection::more(Deadline deadline) {
  const bool hasSome = received.size() > 0;
  while (true) {
    // The look at the clock stands before the look at the socket, or a host that always has one
    // byte more would never be late.
    const bool isLate = std::chrono::steady_clock::now() >= deadline;
    const ssize_t got = received.fill(fd.get());
    if (got > 0 && !isLate) return {};
    if (got == 0) return std::unexpected(hasSome ? WireFault::incomplete : WireFault::closed);
    const bool mustWait = got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    if (got < 0 && !mustWait && errno != EINTR) {
      return std::unexpected(hasSome ? WireFault::incomplete : WireFault::closed);
    }
    if (isLate || (mustWait && !wait(POLLIN, deadline))) {
      return std::unexpected(received.size() > 0 ? WireFault::incomplete : WireFault::silent);
    }
  }
}

std::expected<Bytes, WireFault> RawConnection::line(Deadline deadline) {
  while (true) {
    if (auto found = received.takeLine()) return std::move(*found);
    if (auto come = more(deadline); !come) return std::unexpected(come.error());
    // The rule of every reader: past the limit it does not look for the end any more.
    if (received.size() > ControlWire::maxFrameBytes) return std::unexpected(WireFault::tooLong);
  }
}

std::expected<StreamFrame, WireFault> RawConnection::frame(Deadline deadline) {
  while (true) {
    auto cut = ControlStreamFrame::parse(received);
    if (!cut) return std::unexpected(WireFault::tooLong);
    if (*cut) return std::move(**cut);
    if (auto come = more(deadline); !come) return std::unexpected(come.error());
  }
}

std::expected<char, WireFault> RawConnection::nextByte(Deadline deadline) {
  if (received.size() == 0) {
    if (auto come = more(deadline); !come) return std::unexpected(come.error());
  }
  return received.view().front();
}

BytesView RawConnection::bytesUntil(Deadline deadline) {
  if (received.size() == 0) (void)more(deadline);
  return received.view();
}

bool RawConnection::hangsUpBy(Deadline deadline) {
  while (true) {
    received.consume(received.size());
    if (const auto come = more(deadline); !come) return come.error() == WireFault::closed;
  }
}

}  // namespace tarnel
