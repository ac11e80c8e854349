// Must not compile: the checks judge any host, and know none.
#include "host/ReferenceHost.h"
