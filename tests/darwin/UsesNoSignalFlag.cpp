// Must not compile: a flag of send() that Darwin lacks.
#include <sys/socket.h>

long uses(int fd) { return ::send(fd, "x", 1, MSG_NOSIGNAL); }
