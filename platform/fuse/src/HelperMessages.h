// What fusermount3 says while it mounts for a user who is not root. It prints on our standard
// error; a user gets it as part of our own line instead.
//
// While one of these lives, standard error of the whole process goes to memory, so it must be
// before the process has threads that print. For root, whom no helper serves, it does nothing.
#pragma once

#include <string>

#include "control/UniqueFd.h"

namespace tarnel {

class HelperMessages {
 public:
  HelperMessages();
  ~HelperMessages() { restore(); }
  HelperMessages(const HelperMessages&) = delete;
  HelperMessages& operator=(const HelperMessages&) = delete;

  // Gives standard error back. What was said, without line feeds at its end; mostly nothing.
  [[nodiscard]] std::string take();

 private:
  void restore();

  UniqueFd memory;
  UniqueFd standardError;  // the real one, while it is replaced
};

}  // namespace tarnel
