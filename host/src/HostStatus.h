// A status of this system as the protocol carries it: the modification time rounded down to whole
// milliseconds, the mode with its type bits, the link count at most what 32 bits hold.
#pragma once

#include <sys/stat.h>

#include <string_view>

#include "control/ControlResponse.h"
#include "host/AccountNames.h"

namespace tarnel {

// Overwrites `out`, whose texts keep their memory from one entry of a listing to the next.
void fillControlStat(ControlStat& out, std::string_view name, const struct stat& status,
                     AccountNames& accounts);

}  // namespace tarnel
