// A run of the checks against a host, kept for a test to look at.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "check/HostCheck.h"

namespace tarnel::test {

// No test is about speed or about how long a busy machine takes.
inline CheckLimits patientLimits() {
  using std::chrono::seconds;
  return {.answer = seconds(30),
          .quiet = std::chrono::milliseconds(20),
          .search = seconds(60),
          .stream = seconds(60),
          .whole = seconds(240),
          .roundTrip = seconds(30),
          .bytesPerSecond = 1};
}

struct CheckRun {
  std::map<int, CheckVerdict> verdicts;

  [[nodiscard]] std::vector<int> with(CheckOutcome outcome) const {
    std::vector<int> numbers;
    for (const auto& [number, verdict] : verdicts) {
      if (verdict.outcome == outcome) numbers.push_back(number);
    }
    return numbers;
  }
  [[nodiscard]] std::vector<int> failed() const { return with(CheckOutcome::fail); }
  [[nodiscard]] std::vector<int> skipped() const { return with(CheckOutcome::skip); }

  friend std::ostream& operator<<(std::ostream& out, const CheckRun& run) {
    for (const auto& [number, verdict] : run.verdicts) {
      if (verdict.outcome == CheckOutcome::pass) continue;
      out << rawValue(verdict.outcome) << ' ' << number << ": " << verdict.note << '\n';
    }
    return out;
  }
};

// Every note is one line of plain characters.
inline CheckRun runChecks(const std::string& socketPath, const std::vector<int>& wanted = {},
                          const CheckLimits& limits = patientLimits()) {
  CheckRun run;
  const CheckCounts counts =
      runHostChecks(socketPath, limits, wanted, [&](const auto& check, const auto& verdict) {
        EXPECT_TRUE(run.verdicts.emplace(check.number, verdict).second);
        for (const char c : verdict.note) {
          EXPECT_GE(static_cast<unsigned char>(c), 0x20) << verdict.note;
        }
        if (verdict.outcome != CheckOutcome::pass) {
          EXPECT_NE(verdict.note, "");
        }
        return true;
      });
  EXPECT_EQ(counts.failed, static_cast<int>(run.failed().size()));
  EXPECT_EQ(counts.skipped, static_cast<int>(run.skipped().size()));
  EXPECT_EQ(counts.passed + counts.failed + counts.skipped, static_cast<int>(run.verdicts.size()));
  return run;
}

}  // namespace tarnel::test
