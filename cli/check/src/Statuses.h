// What `stat` and `list` say of files and folders, for checks that compare it.
#pragma once

#include <map>
#include <string>

#include "HostProbe.h"

namespace tarnel {

// The status of what was listed; fails without one.
[[nodiscard]] Checked<ControlStat> statOf(const HostProbe& host, const std::string& location);

using EntriesByName = std::map<std::string, ControlStat>;  // by the bytes of the name

// The entries with safe names; none when the listing is refused.
[[nodiscard]] Checked<EntriesByName> entriesByName(const HostProbe& host,
                                                   const std::string& folder);

}  // namespace tarnel
