// The threads of the system. Each blocks all signals, so that only the thread that means to take a
// signal does, and carries a short name for debuggers (the last 15 bytes on Linux).
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace tarnel {

// Starts `body` on a new thread. The caller joins or detaches it. Throws std::system_error when the
// system gives no thread; the caller's signal mask is as it was in every case.
[[nodiscard]] std::thread startThread(const std::string& name, std::function<void()> body);

// Blocks every signal for the calling thread and those that it starts.
void blockAllSignals();

}  // namespace tarnel
