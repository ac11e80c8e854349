// What the adapter itself has to say, in the volume's log.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel {

// Where lines of the Linux side go: standard error in the foreground, the system log otherwise.
// Control characters in names are shown escaped. Call one of them before the first mount.
void logToStandardError(bool debug);
void logToSystemLog();

void logLeftOutNames(std::string_view directory, std::size_t count);

}  // namespace tarnel
