// The file system knows no adapter.
#include "fskit/TarnelCore.h"
