// The names in a folder of this machine. Threads: one.
#pragma once

#include <functional>
#include <string>

namespace tarnel {

// Calls `use` with each name but "." and "..", until it returns false. True when there was no more;
// false also when the folder cannot be read.
[[nodiscard]] bool forEachName(int folder, const std::function<bool(const std::string&)>& use);

}  // namespace tarnel
