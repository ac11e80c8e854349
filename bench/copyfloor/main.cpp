// copyfloor SOURCE DEST: what moving SOURCE's bytes to the new file DEST costs without any
// protocol. One process sends them from memory over a Unix-domain stream socket, another reads 64
// KiB pieces and writes them. Prints the seconds from the first byte to the closed file; loading
// SOURCE is not counted.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "control/PosixSocket.h"
#include "control/UniqueFd.h"

namespace {

using tarnel::UniqueFd;

[[noreturn]] void giveUp(const char* what) {
  std::perror(what);
  std::_Exit(1);
}

std::string_view load(const char* path) {
  const UniqueFd file(::open(path, O_RDONLY));
  struct stat status{};
  if (!file.valid() || ::fstat(file.get(), &status) != 0) giveUp(path);
  const auto size = static_cast<std::size_t>(status.st_size);
  void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_SHARED | MAP_POPULATE, file.get(), 0);
  if (bytes == MAP_FAILED) giveUp("mmap");
  return {static_cast<const char*>(bytes), size};
}

void send(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = tarnel::writeWithoutSignal(socket, bytes.substr(0, 262'144));
    if (sent <= 0) giveUp("send");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void receive(int socket, int file) {
  static std::array<char, 65'536> piece;
  while (true) {
    const ssize_t got = ::read(socket, piece.data(), piece.size());
    if (got < 0) giveUp("read");
    if (got == 0) return;
    for (ssize_t done = 0; done < got;) {
      const ssize_t written =
          ::write(file, piece.data() + done, static_cast<std::size_t>(got - done));
      if (written <= 0) giveUp("write");
      done += written;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: copyfloor SOURCE DEST\n");
    return 2;
  }
  const std::string_view bytes = load(argv[1]);
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) giveUp("socketpair");
  UniqueFd ours(ends[0]);
  UniqueFd theirs(ends[1]);
  tarnel::raiseSocketBuffers(ours.get());
  tarnel::raiseSocketBuffers(theirs.get());
  const auto began = std::chrono::steady_clock::now();
  const pid_t sender = ::fork();
  if (sender < 0) giveUp("fork");
  if (sender == 0) {
    ours.reset();
    send(theirs.get(), bytes);
    std::_Exit(0);
  }
  theirs.reset();
  UniqueFd file(::open(argv[2], O_WRONLY | O_CREAT | O_EXCL, 0644));
  if (!file.valid()) giveUp(argv[2]);
  receive(ours.get(), file.get());
  file.reset();
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - began;
  int status = 0;
  if (::waitpid(sender, &status, 0) != sender || status != 0) return 1;
  std::printf("%.6f\n", seconds.count());
  return 0;
}
