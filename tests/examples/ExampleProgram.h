// The examples as programs of their own.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <utility>
#include <vector>

#include "support/RunProgram.h"

namespace tarnel::test {

inline ProgramOutcome runExample(const std::vector<std::string>& arguments) {
  ProgramOutcome outcome = runProgram(arguments);
  EXPECT_FALSE(sanitizerComplained(outcome.err)) << outcome.err;
  return outcome;
}

inline ProgramOutcome listShares(const std::string& socket) {
  return runExample({TARNEL_LIST_SHARES, socket});
}

inline ProgramOutcome readTree(const std::string& socket, const std::string& location) {
  return runExample({TARNEL_READ_TREE, socket, location});
}

// The minimal host, until the end of the test.
class MinimalHost {
 public:
  MinimalHost(const std::string& socket, const std::string& folder)
      : program({TARNEL_MINIMAL_HOST, socket, folder}) {
    EXPECT_TRUE(program.waitForOutput("sharing me/")) << "the host did not start";
  }
  ~MinimalHost() {
    program.signal(SIGTERM);
    const ProgramOutcome outcome = program.wait();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_FALSE(sanitizerComplained(outcome.err)) << outcome.err;
  }
  MinimalHost(const MinimalHost&) = delete;
  MinimalHost& operator=(const MinimalHost&) = delete;

 private:
  Program program;
};

}  // namespace tarnel::test
