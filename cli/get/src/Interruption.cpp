#include "get/Interruption.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace tarnel {

void Interruption::raise() {
  MutexLock hold(lock);
  isRaised = true;
  for (const int fd : sockets) {
    if (fd >= 0) ::shutdown(fd, SHUT_RDWR);
  }
}

bool Interruption::raised() const {
  MutexLock hold(lock);
  return isRaised;
}

void Interruption::removePendingFile() {
  MutexLock hold(lock);
  if (pendingFolder >= 0) ::unlinkat(pendingFolder, pendingName.c_str(), 0);
  pendingFolder = -1;
}

bool Interruption::addSocket(int fd) {
  MutexLock hold(lock);
  if (isRaised) {
    ::shutdown(fd, SHUT_RDWR);
    return false;
  }
  int* const free = std::find(std::begin(sockets), std::end(sockets), -1);
  if (free == std::end(sockets)) std::abort();
  *free = fd;
  return true;
}

void Interruption::removeSocket(int fd) {
  MutexLock hold(lock);
  std::replace(std::begin(sockets), std::end(sockets), fd, -1);
}

void Interruption::setPendingFile(int folder, const std::string& name) {
  MutexLock hold(lock);
  pendingFolder = folder;
  pendingName = name;
}

void Interruption::clearPendingFile() {
  MutexLock hold(lock);
  pendingFolder = -1;
}

}  // namespace tarnel
