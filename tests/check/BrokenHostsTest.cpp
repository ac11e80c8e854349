// Hosts with one fault each are told of it by the check that is there for it.
#include <gmock/gmock.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "CheckRun.h"
#include "Faults.h"
#include "control/Mutex.h"

namespace tarnel::test {
namespace {

// Left out of these runs: what is about time, and what sends much.
bool isQuick(int number) {
  for (const int slow : {104, 108, 109, 110, 113, 213}) {
    if (number == slow) return false;
  }
  return number / 100 != 9;
}

std::vector<int> quickChecks() {
  std::vector<int> numbers;
  for (const HostCheck& check : hostChecks()) {
    if (isQuick(check.number)) numbers.push_back(check.number);
  }
  return numbers;
}

std::vector<int> expectedOf(const FaultCase& fault) {
  std::vector<int> expected = fault.following;
  expected.push_back(fault.meant);
  std::sort(expected.begin(), expected.end());
  return expected;
}

// What nobody asked for comes in one piece with the answer: it is there, or it never comes.
CheckLimits hastyLimits() {
  CheckLimits limits = patientLimits();
  limits.quiet = std::chrono::milliseconds(1);
  return limits;
}

class BrokenHosts : public testing::TestWithParam<FaultCase> {};

TEST_P(BrokenHosts, areCaughtByTheCheckThatIsMeantForThem) {
  FaultyHost host(GetParam().fault);
  const CheckRun run = runChecks(host.path(), quickChecks(), hastyLimits());
  EXPECT_EQ(run.failed(), expectedOf(GetParam())) << run;
}

std::string nameOf(const testing::TestParamInfo<FaultCase>& info) { return info.param.testName(); }

INSTANTIATE_TEST_SUITE_P(Answers, BrokenHosts, testing::ValuesIn(answerFaults()), nameOf);
INSTANTIATE_TEST_SUITE_P(Contents, BrokenHosts, testing::ValuesIn(contentFaults()), nameOf);
INSTANTIATE_TEST_SUITE_P(Streams, BrokenHosts, testing::ValuesIn(streamFaults()), nameOf);

class SilentHosts : public testing::TestWithParam<FaultCase> {};

TEST_P(SilentHosts, areCaughtOnceTheTimeIsOver) {
  // The other checks might fail here for want of time.
  const int meant = GetParam().meant;
  CheckLimits limits = patientLimits();
  (meant / 100 == 8 ? limits.stream : limits.answer) = std::chrono::milliseconds(200);
  FaultyHost host(GetParam().fault);
  const CheckRun run = runChecks(host.path(), {meant}, limits);
  EXPECT_EQ(run.failed(), std::vector<int>{meant}) << run;
}

INSTANTIATE_TEST_SUITE_P(Hosts, SilentHosts, testing::ValuesIn(silentFaults()), nameOf);

TEST(BrokenHostsTable, hasAtLeastFifteenFaultsOfManyGroups) {
  std::set<int> meant;
  for (const auto& faults : {answerFaults(), contentFaults(), streamFaults(), silentFaults()}) {
    for (const FaultCase& fault : faults) meant.insert(fault.meant);
  }
  EXPECT_GE(meant.size(), 40U);
}

TEST(RightHost, hasNoFaultInAnyCheck) {
  FaultyHost host(rightReply);
  // It waits for the end of every line: a scripted host is no whole host.
  std::vector<int> wanted;
  for (const HostCheck& check : hostChecks()) {
    if (check.number != 110) wanted.push_back(check.number);
  }
  const CheckRun run = runChecks(host.path(), wanted);
  EXPECT_THAT(run.failed(), testing::IsEmpty()) << run;
  EXPECT_THAT(run.skipped(), testing::ElementsAre(510, 614)) << run;
}

TEST(BrokenHost, thatSpeaksFirstIsCaught) {
  FaultyHost host(rightReply);
  host.greet("hello\n");
  CheckLimits limits = patientLimits();
  limits.quiet = limits.answer;
  EXPECT_EQ(runChecks(host.path(), {104}, limits).failed(), std::vector<int>{104});
}

TEST(BrokenHost, thatWaitsForEverForTheEndOfALineIsCaught) {
  FaultyHost host(rightReply);
  CheckLimits limits = patientLimits();
  limits.answer = std::chrono::milliseconds(200);
  EXPECT_EQ(runChecks(host.path(), {110}, limits).failed(), std::vector<int>{110});
}

TEST(BrokenHost, thatListsMoreThanALineTakesIsCaught) {
  FaultyHost host([](const Exchange& exchange) {
    if (!exchange.isAbout("me/Docs/sub")) return rightReply(exchange);
    std::string line = exchange.answer;
    line.insert(1, "\"filling\":\"" + std::string(16'777'216, 'x') + "\",");
    return HostReply().answer(line);
  });
  EXPECT_EQ(runChecks(host.path(), {510}).failed(), std::vector<int>{510});
}

// Keeps the second answer to `shares` back until there is another one to send first.
class OutOfOrder {
 public:
  HostReply operator()(const Exchange& exchange) {
    MutexLock hold(lock);
    if (exchange.is(ControlOp::shares) && ++asked == 2) {
      keptBack = exchange.answer;
      return HostReply();
    }
    if (!keptBack) return rightReply(exchange);
    return HostReply().answer(exchange.answer).answer(*std::exchange(keptBack, std::nullopt));
  }

 private:
  Mutex lock;  // guards all below
  int asked GUARDED_BY(lock) = 0;
  std::optional<std::string> keptBack GUARDED_BY(lock);
};

TEST(BrokenHost, thatAnswersRequestsOutOfOrderIsCaught) {
  OutOfOrder fault;
  FaultyHost host([&fault](const Exchange& exchange) { return fault(exchange); });
  EXPECT_EQ(runChecks(host.path(), {107}).failed(), std::vector<int>{107});
}

}  // namespace
}  // namespace tarnel::test
