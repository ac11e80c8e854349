// The checks that tell a host's author whether a running host speaks the protocol.
//
// A check is a value: a number, a title and a function that asks the host and judges. Numbers are
// grouped by hundreds (docs/check-host.md lists them) and never reused. A verdict's note is one
// line for people: what was seen and what to change for a failure, what the host lacks for a skip,
// what was measured for some passes. Nothing in it can control a terminal, whatever the host says.
//
// Every wait is bounded by CheckLimits; so is what one answer, one stream and the search for
// material may hold. A host can make checks fail, never crash, hang or grow them. No check changes
// anything at the host: only `shares`, `stat`, `list`, `read` and the two streams are asked, and
// what is no request at all.
// Threads: one for a run.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace tarnel {

enum class CheckOutcome { pass, fail, skip };
[[nodiscard]] std::string_view rawValue(CheckOutcome outcome);  // "pass", "fail", "skip"

struct CheckVerdict {
  CheckOutcome outcome = CheckOutcome::pass;
  std::string note = {};
};

struct CheckLimits {
  std::chrono::milliseconds answer{5'000};   // a whole answer, also one that comes byte by byte
  std::chrono::milliseconds quiet{150};      // how long bytes that nobody asked for are waited for
  std::chrono::milliseconds search{10'000};  // the search for files and folders to ask about
  std::chrono::milliseconds stream{20'000};  // a whole stream
  std::chrono::milliseconds whole{180'000};  // all checks; those that are left are skipped
  std::chrono::milliseconds roundTrip{1'000};     // the slowest round trip that passes
  std::int64_t bytesPerSecond = 262'144;          // the slowest read that passes
  std::int64_t streamBytes = 64 * 1'024 * 1'024;  // payloads of one stream; longer ones are skipped
  std::size_t listings = 200;                     // folders that the search asks for
};

class HostProbe;

struct HostCheck {
  int number;
  std::string_view title;
  CheckVerdict (*run)(HostProbe& host);
};

// In the order of their numbers.
[[nodiscard]] std::span<const HostCheck> hostChecks();

// Called for each check as soon as it is done; false ends the run.
using ReportCheck = std::function<bool(const HostCheck& check, const CheckVerdict& verdict)>;

struct CheckCounts {
  int passed = 0;
  int failed = 0;
  int skipped = 0;
};

// Runs the checks of these numbers, all of them when none is given. Where one of the first three
// fails, a request is not answered at all and the others could only fail as well: they are skipped.
CheckCounts runHostChecks(const std::string& socketPath, const CheckLimits& limits,
                          std::span<const int> wanted, const ReportCheck& report);

}  // namespace tarnel
