// How the command speaks: results on standard output, one line for each failure on standard error.
#pragma once

#include <string>
#include <string_view>

namespace tarnel {

// Exit statuses.
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int usage = 2;

// "tarnel: MESSAGE" on standard error, control characters escaped. Returns `failed`.
int fail(std::string_view message);

// The text as it is, or escaped when standard output is a terminal.
[[nodiscard]] std::string shown(std::string_view text);

// Writes all of it to standard output. False when nobody reads it any more, which is no failure, or
// when it cannot be written, which is: see `outputFailed`.
bool print(std::string_view text);
[[nodiscard]] bool outputFailed();
// True once nothing more can be printed, for either reason.
[[nodiscard]] bool outputClosed();

}  // namespace tarnel
