// Running one of the system's own programs and keeping its words.
#pragma once

#include <expected>
#include <string>
#include <vector>

namespace tarnel {

struct ToolOutcome {
  int status;                      // its exit status, or 128 and the signal that ended it
  std::vector<std::string> words;  // the lines of both its outputs, without empty ones

  friend bool operator==(const ToolOutcome&, const ToolOutcome&) = default;
};

// Runs arguments[0], a path, to its end; it reads nothing. An errno when it cannot be started.
// At most 64 KiB of its words are kept.
[[nodiscard]] std::expected<ToolOutcome, int> runTool(const std::vector<std::string>& arguments);

}  // namespace tarnel
