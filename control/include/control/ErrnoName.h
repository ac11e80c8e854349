// The symbol of an error number, for people who look it up. Threads: pure.
#pragma once

#include <string>

namespace tarnel {

// "ENOENT" for this system's number; "errno 2" where the system does not tell.
[[nodiscard]] std::string errnoName(int error);

}  // namespace tarnel
