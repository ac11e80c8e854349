// The file system knows no kernel interface.
#define FUSE_USE_VERSION 314
#include <fuse_lowlevel.h>
