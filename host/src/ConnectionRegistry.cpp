#include "ConnectionRegistry.h"

#include <sys/socket.h>

namespace tarnel {

bool ConnectionRegistry::add(int fd) {
  MutexLock hold(lock);
  if (ended || live.size() >= most) return false;
  live.insert(fd);
  return true;
}

void ConnectionRegistry::finish(UniqueFd fd) {
  MutexLock hold(lock);
  live.erase(fd.get());
  fd.reset();
  emptied.notify_all();
}

void ConnectionRegistry::endAll() {
  MutexLock hold(lock);
  ended = true;
  for (const int fd : live) ::shutdown(fd, SHUT_RDWR);
  while (!live.empty()) hold.wait(emptied);
}

}  // namespace tarnel
