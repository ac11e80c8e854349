// The place where a host's socket is to stand. The server replaces whatever it finds there, so this
// is looked at first: only nothing at all, or a socket on which nobody answers any more, may be
// replaced.
#pragma once

#include <optional>
#include <string>

#include "host/HostStartError.h"

namespace tarnel {

// nullopt when the place may be taken.
[[nodiscard]] std::optional<HostStartError> socketSiteError(const std::string& path);

}  // namespace tarnel
