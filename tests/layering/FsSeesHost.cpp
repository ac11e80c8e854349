// The file system talks to its host over the socket alone.
#include "host/ReferenceHost.h"
