// `tarnel check-host`.
#include "CommandFixture.h"
#include "support/TreeHost.h"

namespace tarnel::test {
namespace {

class CheckHostCommand : public CommandFixture {
 protected:
  CheckHostCommand() { share.file("a", "hello"); }
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines(1);
  for (const char c : text) {
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back().push_back(c);
    }
  }
  lines.pop_back();
  return lines;
}

TEST_F(CheckHostCommand, aHostThatSpeaksTheProtocolIsStatusZeroWithALineForEachCheck) {
  startHost();
  const ProgramOutcome outcome = tarnel({"check-host"});
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_EQ(outcome.err, "");
  std::vector<std::string> lines = linesOf(outcome.out);
  ASSERT_GT(lines.size(), 40U);
  EXPECT_THAT(lines.back(), HasSubstr(" passed, 0 failed, "));
  lines.pop_back();
  for (const std::string& line : lines) {
    EXPECT_THAT(line, testing::AnyOf(StartsWith("PASS "), StartsWith("SKIP ")));
  }
  EXPECT_EQ(lines.front(), "PASS 101 a connection's first request is answered");
}

TEST_F(CheckHostCommand, jsonIsAnObjectALine) {
  startHost();
  const ProgramOutcome outcome = tarnel({"check-host", "--json"});
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  const std::vector<std::string> lines = linesOf(outcome.out);
  ASSERT_GT(lines.size(), 40U);
  EXPECT_EQ(lines.front(), R"({"number":101,"title":"a connection's first request is answered",)"
                           R"("outcome":"pass","note":""})");
  for (const std::string& line : lines) {
    EXPECT_THAT(line, StartsWith(R"({"number":)"));
    EXPECT_EQ(line.back(), '}');
  }
}

TEST_F(CheckHostCommand, aHostThatFailsACheckIsStatusOneAndTheLineSaysWhatToChange) {
  TreeHost bad;
  bad.file("me/Docs/a", "hello");
  bad.answer({.op = ControlOp::shares}, HostReply().answer("nonsense"));
  const ProgramOutcome outcome = runTarnel({"check-host", "--socket", bad.path()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("\nFAIL 103 an answer reads as a response: "));
  EXPECT_THAT(outcome.out, HasSubstr("\nSKIP 301 shares are listed: needs check 103 to pass\n"));
}

TEST_F(CheckHostCommand, wrongUsageIsStatusTwo) {
  expectFailure(tarnel({"check-host", "--frobnicate"}), 2, "");
  expectFailure(tarnel({"check-host", "me/Docs"}), 2, "");
}

TEST_F(CheckHostCommand, aReaderThatLeavesEndsItQuietly) {
  startHost();
  const ProgramOutcome outcome = shell("$T check-host | head -n 1");
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, StartsWith("PASS 101 "));
}

}  // namespace
}  // namespace tarnel::test
