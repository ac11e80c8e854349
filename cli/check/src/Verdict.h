// How a check says what it found.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <utility>

#include "check/HostCheck.h"

namespace tarnel {

// A value from the host, or the verdict that ends the check.
template <class T>
using Checked = std::expected<T, CheckVerdict>;

inline CheckVerdict passed(std::string note = {}) {
  return {.outcome = CheckOutcome::pass, .note = std::move(note)};
}
inline CheckVerdict failedCheck(std::string note) {
  return {.outcome = CheckOutcome::fail, .note = std::move(note)};
}
inline CheckVerdict skipped(std::string note) {
  return {.outcome = CheckOutcome::skip, .note = std::move(note)};
}
inline std::unexpected<CheckVerdict> failing(std::string note) {
  return std::unexpected(failedCheck(std::move(note)));
}

// A text of the host in a note: in quotes, on one line, without control characters, cut where it is
// long.
[[nodiscard]] std::string quoted(std::string_view text);

}  // namespace tarnel
