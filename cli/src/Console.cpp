#include "Console.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "control/Text.h"

namespace tarnel {
namespace {

// The command has one thread that prints.
bool closed = false;
bool failedToWrite = false;

}  // namespace

int fail(std::string_view message) {
  const std::string line = "tarnel: " + escaped(message) + "\n";
  (void)!::write(STDERR_FILENO, line.data(), line.size());
  return failed;
}

std::string escaped(std::string_view text) {
  constexpr std::string_view hex = "0123456789abcdef";
  const bool isText = isValidUtf8(text);
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isControl = byte < 0x20 || byte == 0x7f;
    if (isControl || (byte >= 0x80 && !isText)) {
      out += {'\\', 'x', hex[byte >> 4], hex[byte & 15]};
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::string shown(std::string_view text) {
  static const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  return isTerminal ? escaped(text) : std::string(text);
}

bool print(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      closed = true;
      failedToWrite = errno != EPIPE;  // `tarnel cat ... | head` ends quietly
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool outputClosed() { return closed; }

bool outputFailed() { return failedToWrite; }

std::string errnoName(int error) {
#if defined(__GLIBC__)
  if (const char* name = ::strerrorname_np(error)) return name;
#endif
  return "errno " + std::to_string(error);
}

}  // namespace tarnel
