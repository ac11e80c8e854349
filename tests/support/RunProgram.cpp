#include "support/RunProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/Eventually.h"

extern char** environ;

namespace tarnel::test {
namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& added) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!added.contains(text.substr(0, text.find('=')))) all.push_back(text);
  }
  for (const auto& [name, value] : added) all.push_back(name + "=" + value);
  return all;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

int exitStatus(int waited) {
  return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

}  // namespace

std::size_t ProgramOutcome::errorLines() const {
  return static_cast<std::size_t>(std::count(err.begin(), err.end(), '\n'));
}

Program::Program(const std::vector<std::string>& arguments, const ProgramOptions& options) {
  std::vector<std::string> texts = arguments;
  std::vector<std::string> settings = environmentWith(options.environment);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  constexpr int fresh = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (files / "out").c_str(), fresh, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (files / "err").c_str(), fresh, 0600);
  if (!options.terminal.empty()) {
    const char* const terminal = options.terminal.c_str();
    constexpr int used = O_RDWR | O_NOCTTY;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, terminal, used, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, terminal, used, 0);
  }
  if (!options.folder.empty()) {
    posix_spawn_file_actions_addchdir_np(&actions, options.folder.c_str());
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  sigset_t all;
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  const int error = ::posix_spawnp(&child, texts[0].c_str(), &actions, &attributes,
                                   pointersTo(texts).data(), pointersTo(settings).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    ADD_FAILURE() << "cannot run " << texts[0] << ": " << std::strerror(error);
    child = -1;
  }
}

Program::~Program() {
  if (child < 0 || hasEnded()) return;
  ::kill(-child, SIGKILL);
  (void)eventually([this] { return hasEnded(); });
}

void Program::signal(int number) const {
  if (child > 0 && !reaped) ::kill(child, number);
}

bool Program::hasEnded() {
  if (child < 0 || reaped) return true;
  reaped = ::waitpid(child, &waited, WNOHANG) == child;
  return reaped;
}

bool Program::waitForOutput(std::string_view text) const {
  return eventually([&] { return contentOf(files / "out").find(text) != std::string::npos; });
}

bool Program::waitForError(std::string_view text) const {
  return eventually([&] { return contentOf(files / "err").find(text) != std::string::npos; });
}

ProgramOutcome Program::wait(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!hasEnded() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ProgramOutcome outcome{.out = contentOf(files / "out"), .err = contentOf(files / "err")};
  if (child > 0 && reaped) outcome.status = exitStatus(waited);
  if (!reaped) ADD_FAILURE() << "the program did not end in time; it said: " << outcome.err;
  return outcome;
}

ProgramOutcome runProgram(const std::vector<std::string>& arguments, const ProgramOptions& options,
                          std::chrono::milliseconds limit) {
  return Program(arguments, options).wait(limit);
}

std::string tarnelProgram() { return TARNEL_PROGRAM; }

ProgramOutcome runTarnel(std::vector<std::string> arguments, const ProgramOptions& options) {
  arguments.insert(arguments.begin(), tarnelProgram());
  ProgramOutcome outcome = runProgram(arguments, options);
  EXPECT_FALSE(sanitizerComplained(outcome.err)) << outcome.err;
  return outcome;
}

bool sanitizerComplained(std::string_view standardError) {
  for (const std::string_view sign : {"Sanitizer:", "runtime error:"}) {
    if (standardError.find(sign) != std::string_view::npos) return true;
  }
  return false;
}

}  // namespace tarnel::test
