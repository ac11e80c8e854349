// Must not compile: a call that Darwin lacks.
#include <sys/socket.h>

long uses(int fd) { return ::accept4(fd, nullptr, nullptr, 0); }
