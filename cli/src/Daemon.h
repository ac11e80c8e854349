// Going on in the background: the calling process returns once the daemon says that it is ready, or
// why it is not.
#pragma once

#include <functional>
#include <string>

#include "control/UniqueFd.h"

namespace tarnel {

class Daemon {
 public:
  explicit Daemon(UniqueFd toParent) : parent(std::move(toParent)) {}

  // Lets the calling process return 0, and leaves its terminal. False when that process has gone
  // before it could be told: whoever started it has taken it back, and the daemon has to end.
  [[nodiscard]] bool ready();
  int failed(const std::string& message);  // the calling process prints it and returns 1

 private:
  UniqueFd parent;
};

// Forks; runs `body` in a session of its own, and `whenReady` in the calling process once the
// daemon is ready. Call before any thread is started.
int runAsDaemon(const std::function<int(Daemon&)>& body, const std::function<int()>& whenReady);

}  // namespace tarnel
