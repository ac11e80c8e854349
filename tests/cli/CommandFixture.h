// Runs the real command, most of the time against a real host of its own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/FileTree.h"
#include "support/TestHost.h"

namespace tarnel::test {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A failure as a user sees it: nothing on standard output, one line on standard error.
inline void expectFailure(const ProgramOutcome& outcome, int status, const std::string& words) {
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errorLines(), 1U) << outcome.err;
  EXPECT_THAT(outcome.err, StartsWith("tarnel: "));
  EXPECT_THAT(outcome.err, HasSubstr(words));
}

class CommandFixture : public testing::Test {
 protected:
  [[nodiscard]] std::string socket() const { return sockets / "s"; }
  void startHost() {
    host = std::make_unique<TestHost>(socket(),
                                      std::vector<std::string>{"--share", "Docs=" + share.path()});
  }
  // The command at the test's socket.
  ProgramOutcome tarnel(std::vector<std::string> arguments) {
    return runTarnel(std::move(arguments), {.environment = {{"TARNEL_SOCKET", socket()}}});
  }
  // The same through a shell, $T being the command.
  ProgramOutcome shell(const std::string& line) {
    return runProgram({"sh", "-c", line},
                      {.environment = {{"TARNEL_SOCKET", socket()}, {"T", tarnelProgram()}}});
  }

  FileTree share;
  TempDir sockets;
  std::unique_ptr<TestHost> host;
};

}  // namespace tarnel::test
