// The file system knows no adapter.
#include "fusefs/FuseSession.h"
