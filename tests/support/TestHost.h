// `tarnel host` in a process of its own, at a socket of the test's.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/RunProgram.h"

namespace tarnel::test {

class TestHost {
 public:
  // Waits until it is ready. arguments: what follows the socket, as `--share Docs=/tmp/x`.
  TestHost(const std::string& socket, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {tarnelProgram(), "host", "--socket", socket});
    program = std::make_unique<Program>(arguments);
    EXPECT_TRUE(program->waitForOutput("tarnel host: sharing")) << "the host did not start";
  }
  ~TestHost() { (void)end(SIGTERM); }
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  // Ends it with the signal; its exit status.
  int end(int signal) {
    if (!program) return -1;
    program->signal(signal);
    const ProgramOutcome outcome = program->wait();
    EXPECT_FALSE(sanitizerComplained(outcome.err)) << outcome.err;
    program.reset();
    return outcome.status;
  }
  [[nodiscard]] pid_t pid() const { return program->pid(); }

 private:
  std::unique_ptr<Program> program;
};

}  // namespace tarnel::test
