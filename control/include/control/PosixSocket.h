// Where this system's sockets differ from another's. The one file of the project with such
// differences (close-on-exec at creation, broken-pipe signals, credentials of a peer).
#pragma once

#include <sys/time.h>
#include <sys/types.h>

#include <optional>

#include "control/Bytes.h"
#include "control/UniqueFd.h"

namespace tarnel {

// A stream socket of the Unix domain, closed on exec; invalid with errno set on failure.
[[nodiscard]] UniqueFd makeUnixStreamSocket();

// One connection from a listening descriptor; itself blocking and closed on exec. Invalid with
// errno set when there is none.
[[nodiscard]] UniqueFd acceptConnection(int listenFD);

void setNonBlocking(int fd, bool on);

// Room in the socket for most of a large answer, so that the two sides do not wake each other for
// every piece of it (one of these systems gives 8 KiB unless asked). As much as the system gives;
// no failure is told.
void raiseSocketBuffers(int fd);

// write() to a socket whose peer may have gone: EPIPE, never the signal.
[[nodiscard]] ssize_t writeWithoutSignal(int fd, BytesView bytes);

struct Pipe {
  UniqueFd readEnd;
  UniqueFd writeEnd;
};
// Both ends closed on exec; nullopt with errno set on failure.
[[nodiscard]] std::optional<Pipe> makePipe();

// True when the process at the other end runs as this process's user or as root. A peer that cannot
// be told is not trusted.
[[nodiscard]] bool peerIsTrusted(int fd);

// To be called before a read() that is likely to wait. On Linux it sleeps until there is something
// to tell (bytes, an end, an error), or returns false with what read() would have set: errno EAGAIN
// when that took longer than the limit, of which zero is none, and EINTR when a signal was handled.
// A reader that sleeps in read() is woken there also when its peer takes what it had sent, for
// nothing.
// Elsewhere it returns true at once, and read() does the waiting.
[[nodiscard]] bool sleepUntilReadable(int fd, timeval limit);

// True when at least one byte can be read now. Does not wait, does not read it, keeps errno.
[[nodiscard]] bool hasReadableByte(int fd);

}  // namespace tarnel
