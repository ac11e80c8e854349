// The threads of the system. Each blocks all signals, so that only the thread that means to take a
// signal does, and carries a short name for debuggers (the first 15 bytes on Linux).
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace tarnel {

// Starts `body` on a new thread. The caller joins or detaches it.
[[nodiscard]] std::thread startThread(const std::string& name, std::function<void()> body);

// Blocks every signal for the calling thread and those that it starts.
void blockAllSignals();

}  // namespace tarnel
