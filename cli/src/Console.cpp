#include "Console.h"

#include <unistd.h>

#include <cerrno>

#include "control/ErrnoName.h"
#include "control/Printable.h"

namespace tarnel {
namespace {

// The command has one thread that prints.
bool closed = false;
int writeError = 0;

}  // namespace

int fail(std::string_view message) {
  const std::string line = "tarnel: " + printable(message) + "\n";
  (void)!::write(STDERR_FILENO, line.data(), line.size());
  return failed;
}

std::string shown(std::string_view text) {
  static const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  return isTerminal ? printable(text) : std::string(text);
}

bool print(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      closed = true;
      writeError = errno == EPIPE ? 0 : errno;  // `tarnel cat ... | head` ends quietly
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool outputClosed() { return closed; }

int statusAfterPrinting() {
  if (writeError == 0) return done;
  return fail("cannot write to standard output (" + errnoName(writeError) + ")");
}

}  // namespace tarnel
