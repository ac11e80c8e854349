// Compiles: Darwin's own calls, as the project uses them.
#include <pthread.h>
#include <sys/socket.h>

int uses(int fd) {
  uid_t uid = 0;
  gid_t gid = 0;
  const int on = 1;
  return ::getpeereid(fd, &uid, &gid) + pthread_setname_np("name") +
         ::setsockopt(fd, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
}
