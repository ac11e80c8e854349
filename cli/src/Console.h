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
// when it cannot be written, which is: see statusAfterPrinting.
bool print(std::string_view text);
// True once nothing more can be printed, for either reason.
[[nodiscard]] bool outputClosed();

// Of a command that has printed its results: done, or failed, which it tells, when that could not
// be.
[[nodiscard]] int statusAfterPrinting();

}  // namespace tarnel
