#include "Daemon.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>

#include "Console.h"
#include "control/ErrnoName.h"

namespace tarnel {
namespace {

constexpr char readyByte = 'R';  // anything else is the text of a failure

std::string readAll(int fd) {
  std::string text;
  char piece[512];
  while (true) {
    const ssize_t got = ::read(fd, piece, sizeof piece);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return text;
    text.append(piece, static_cast<std::size_t>(got));
  }
}

void leaveTerminal() {
  (void)!::chdir("/");
  const UniqueFd nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
  if (!nothing.valid()) return;
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nothing.get(), fd);
}

}  // namespace

bool Daemon::ready() {
  leaveTerminal();
  const bool isTold = ::write(parent.get(), &readyByte, 1) == 1;
  parent.reset();
  return isTold;
}

int Daemon::failed(const std::string& message) {
  (void)!::write(parent.get(), message.data(), message.size());
  return tarnel::failed;
}

int runAsDaemon(const std::function<int(Daemon&)>& body, const std::function<int()>& whenReady) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return fail("cannot start the daemon: " + errnoName(errno));
  UniqueFd readEnd(ends[0]);
  UniqueFd writeEnd(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) return fail("cannot start the daemon: " + errnoName(errno));
  if (child == 0) {
    readEnd.reset();
    ::setsid();
    Daemon daemon(std::move(writeEnd));
    try {
      return body(daemon);
    } catch (const std::exception& error) {  // told once, by the process that the user started
      return daemon.failed(std::string("cannot go on: ") + error.what());
    }
  }
  writeEnd.reset();
  const std::string said = readAll(readEnd.get());
  if (said == std::string(1, readyByte)) return whenReady();
  return fail(said.empty() ? "the daemon ended before the mount was ready" : said);
}

}  // namespace tarnel
