// The checks of a host use the file system's rules for names and refusals, and the control library.
#include "check/HostCheck.h"
#include "control/ControlResponse.h"
#include "fs/FabricSourceError.h"

static_assert(sizeof(tarnel::HostCheck) > 0);
