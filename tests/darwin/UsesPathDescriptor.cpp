// Must not compile: a kind of descriptor that Darwin lacks.
#include <fcntl.h>

long uses(int fd) { return ::openat(fd, "x", O_PATH); }
