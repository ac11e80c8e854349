// Runs a program with a time limit and keeps what it says.
//
//   const ProgramOutcome listed = runProgram({tarnelProgram(), "ls", "me"});
//   EXPECT_EQ(listed.status, 0) << listed.err;
//
// Standard output and error go to files, so that a program which leaves a daemon behind does not
// keep anybody waiting; standard input is empty. A program may sit at a Terminal instead.
// Threads: one.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/TempDir.h"

namespace tarnel::test {

struct ProgramOptions {
  std::map<std::string, std::string> environment = {};  // added to this process's own
  std::string folder = {};                              // where it starts; empty: here
  std::string terminal = {};  // takes standard input and error; empty: none does
};

struct ProgramOutcome {
  int status = -1;  // exit status; 128 and the signal's number when one ended it; -1: timed out
  std::string out;
  std::string err;

  // Lines of standard error.
  [[nodiscard]] std::size_t errorLines() const;
};

// A program that runs beside the test. Destruction kills it, with what it started itself.
class Program {
 public:
  explicit Program(const std::vector<std::string>& arguments, const ProgramOptions& options = {});
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  static constexpr std::chrono::seconds patience{20};

  void signal(int number) const;
  [[nodiscard]] pid_t pid() const { return child; }
  [[nodiscard]] bool waitForOutput(std::string_view text) const;
  [[nodiscard]] bool waitForError(std::string_view text) const;
  // A failure of the test when it does not end in time.
  [[nodiscard]] ProgramOutcome wait(std::chrono::milliseconds limit = patience);
  [[nodiscard]] bool hasEnded();

 private:
  TempDir files;
  pid_t child = -1;
  int waited = 0;  // what waitpid said, once `reaped`
  bool reaped = false;
};

[[nodiscard]] ProgramOutcome runProgram(const std::vector<std::string>& arguments,
                                        const ProgramOptions& options = {},
                                        std::chrono::milliseconds limit = Program::patience);

// The command that was built with these tests.
[[nodiscard]] std::string tarnelProgram();
[[nodiscard]] ProgramOutcome runTarnel(std::vector<std::string> arguments,
                                       const ProgramOptions& options = {});

// True when a sanitizer complained in what a program wrote to standard error.
[[nodiscard]] bool sanitizerComplained(std::string_view standardError);

}  // namespace tarnel::test
