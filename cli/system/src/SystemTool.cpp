#include "systemmount/SystemTool.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <string_view>

#include "control/PosixSocket.h"

extern char** environ;

namespace tarnel {
namespace {

constexpr std::size_t mostWords = 64 << 10;  // bytes

// What the child gets: nothing to read, both outputs into the pipe, and the broken-pipe signal that
// this program itself ignores.
class SpawnSettings {
 public:
  explicit SpawnSettings(int output) {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    ::posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSettings() {
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

std::string readAll(int fd) {
  std::string kept;
  char piece[4096];
  while (true) {
    const ssize_t count = ::read(fd, piece, sizeof piece);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return kept;
    if (kept.size() < mostWords) kept.append(piece, static_cast<std::size_t>(count));
  }
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream from(text);
  for (std::string line; std::getline(from, line);) {
    if (line.find_first_not_of(" \t\r") != std::string::npos) lines.push_back(line);
  }
  return lines;
}

int waitForEnd(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

std::expected<ToolOutcome, int> runTool(const std::vector<std::string>& arguments) {
  auto pipe = makePipe();
  if (!pipe) return std::unexpected(errno);
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const SpawnSettings settings(pipe->writeEnd.get());
  pid_t child = 0;
  const int error =
      ::posix_spawn(&child, argv[0], &settings.actions, &settings.attributes, argv.data(), environ);
  if (error != 0) return std::unexpected(error);
  pipe->writeEnd.reset();
  const std::string said = readAll(pipe->readEnd.get());
  return ToolOutcome{.status = waitForEnd(child), .words = linesOf(said)};
}

}  // namespace tarnel
