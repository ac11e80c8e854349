// The fixed identity of the file system. The container and the volume carry the same identifier,
// across loads and restarts.
#pragma once

#include <string_view>

#include "seam/Resource.h"

namespace tarnel::FSIdentity {

[[nodiscard]] std::string_view shortName();  // "tarnelfs"
[[nodiscard]] const Uuid& uuid();

}  // namespace tarnel::FSIdentity
