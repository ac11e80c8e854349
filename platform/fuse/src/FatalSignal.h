// Whether a thread is about to be ended by a signal.
#pragma once

#include <sys/types.h>

#include <string_view>

namespace tarnel {

// From the text of /proc/TID/status: a signal that ends a process leaves SIGKILL pending for each
// of its threads; one that ends it with a core dump is pending itself until somebody takes it.
// False for a signal that a program handles, ignores or blocks.
[[nodiscard]] bool showsFatalSignal(std::string_view status);

// False also for a thread that cannot be looked at.
[[nodiscard]] bool hasFatalSignal(pid_t thread);

}  // namespace tarnel
