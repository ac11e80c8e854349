#include "SmallSocketBuffers.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "control/Mutex.h"

namespace tarnel::test {
namespace {

struct State {
  Mutex lock;  // guards all below
  bool inForce GUARDED_BY(lock) = false;
  int refusedAbove GUARDED_BY(lock) = std::numeric_limits<int>::max();
  std::vector<SmallSocketBuffers::Request> requests GUARDED_BY(lock);
};

State& state() {
  static State& made = *new State;  // outlives every thread
  return made;
}

}  // namespace

SmallSocketBuffers::SmallSocketBuffers() {
  MutexLock hold(state().lock);
  state().inForce = true;
  state().refusedAbove = std::numeric_limits<int>::max();
  state().requests.clear();
}

SmallSocketBuffers::~SmallSocketBuffers() {
  MutexLock hold(state().lock);
  state().inForce = false;
}

void SmallSocketBuffers::refuseAbove(int bytes) {
  MutexLock hold(state().lock);
  state().refusedAbove = bytes;
}

std::vector<SmallSocketBuffers::Request> SmallSocketBuffers::requests() const {
  MutexLock hold(state().lock);
  return state().requests;
}

// The size to ask the system for; negative when it is refused.
static int allowed(int fd, int name, int bytes) {
  MutexLock hold(state().lock);
  if (!state().inForce) return bytes;
  state().requests.push_back({.fd = fd, .name = name, .bytes = bytes});
  return bytes > state().refusedAbove ? -1 : std::min(bytes, SmallSocketBuffers::limit);
}

}  // namespace tarnel::test

extern "C" int setsockopt(int fd, int level, int name, const void* value,
                          socklen_t length) noexcept {
  if (level == SOL_SOCKET && (name == SO_SNDBUF || name == SO_RCVBUF) && length == sizeof(int)) {
    int bytes = 0;
    std::memcpy(&bytes, value, sizeof bytes);
    bytes = tarnel::test::allowed(fd, name, bytes);
    if (bytes < 0) {
      errno = ENOBUFS;
      return -1;
    }
    return static_cast<int>(
        ::syscall(SYS_setsockopt, fd, level, name, &bytes, socklen_t{sizeof bytes}));
  }
  return static_cast<int>(::syscall(SYS_setsockopt, fd, level, name, value, length));
}
