// The whole table, and the run through it.
#include <algorithm>
#include <vector>

#include "CheckGroups.h"
#include "HostProbe.h"

namespace tarnel {
namespace {

// The last of the checks without which no other can pass.
constexpr int lastOfGround = 103;

std::vector<HostCheck> allGroups() {
  std::vector<HostCheck> all;
  for (const auto group :
       {framingChecks(), requestChecks(), shareChecks(), statChecks(), listChecks(), readChecks(),
        agreementChecks(), streamChecks(), treeStreamChecks(), speedChecks()}) {
    all.insert(all.end(), group.begin(), group.end());
  }
  return all;
}

void count(CheckCounts& counts, CheckOutcome outcome) {
  switch (outcome) {
    case CheckOutcome::pass:
      ++counts.passed;
      return;
    case CheckOutcome::fail:
      ++counts.failed;
      return;
    case CheckOutcome::skip:
      ++counts.skipped;
      return;
  }
}

}  // namespace

std::string_view rawValue(CheckOutcome outcome) {
  switch (outcome) {
    case CheckOutcome::pass:
      return "pass";
    case CheckOutcome::fail:
      return "fail";
    case CheckOutcome::skip:
      return "skip";
  }
  __builtin_unreachable();
}

std::span<const HostCheck> hostChecks() {
  static const std::vector<HostCheck> all = allGroups();
  return all;
}

CheckCounts runHostChecks(const std::string& socketPath, const CheckLimits& limits,
                          std::span<const int> wanted, const ReportCheck& report) {
  HostProbe host(socketPath, limits);
  CheckCounts counts;
  int brokenGround = 0;
  for (const HostCheck& check : hostChecks()) {
    const bool isWanted =
        wanted.empty() || std::find(wanted.begin(), wanted.end(), check.number) != wanted.end();
    if (!isWanted) continue;
    CheckVerdict verdict;
    if (brokenGround != 0) {
      verdict = skipped("needs check " + std::to_string(brokenGround) + " to pass");
    } else if (host.isOver()) {
      verdict = skipped("the time for all checks is over: answer faster");
    } else {
      verdict = check.run(host);
    }
    const bool isFailure = verdict.outcome == CheckOutcome::fail;
    if (isFailure && check.number <= lastOfGround) brokenGround = check.number;
    count(counts, verdict.outcome);
    if (!report(check, verdict)) break;
  }
  return counts;
}

}  // namespace tarnel
