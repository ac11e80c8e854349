#include "control/UnixSocketServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "UnixAddress.h"
#include "control/PosixSocket.h"
#include "control/Thread.h"
#include "control/UniqueFd.h"

namespace tarnel {
namespace {

using Kind = UnixSocketError::Kind;

constexpr int backlog = 8;
constexpr int restMs = 100;
constexpr const char* queueLabel = "tarnel.tailsocket.accept";

}  // namespace

// One thread that waits for the descriptor to become readable and calls the handler, once for each
// event, until it is cancelled through a pipe.
class UnixSocketServer::ReadinessSource {
 public:
  // False when what is there could not be taken: the thread looks again after a rest.
  using Handler = std::function<bool()>;

  // Null with errno set when there is no pipe or no thread.
  [[nodiscard]] static std::shared_ptr<ReadinessSource> start(int fd, Handler handler) {
    auto stop = makePipe();
    if (!stop) return nullptr;
    auto made = std::shared_ptr<ReadinessSource>(new ReadinessSource(std::move(*stop)));
    try {
      made->thread = startThread(queueLabel, [fd, stop = made->stop, handler = std::move(handler)] {
        watch(fd, stop->readEnd.get(), handler);
      });
    } catch (const std::system_error& error) {
      errno = error.code().value();
      return nullptr;
    }
    return made;
  }

  // Returns when no handler runs any more, unless a handler itself cancels.
  void cancel() {
    // A byte and not only a close: a child process may hold the write end as well.
    const char byte = 0;
    while (::write(stop->writeEnd.get(), &byte, 1) < 0 && errno == EINTR) {
    }
    if (thread.get_id() == std::this_thread::get_id()) {
      thread.detach();
    } else {
      thread.join();
    }
  }

  // Without a cancel the thread goes on listening, and keeps the pipe.
  ~ReadinessSource() {
    if (thread.joinable()) thread.detach();
  }

 private:
  explicit ReadinessSource(Pipe pipe) : stop(std::make_shared<Pipe>(std::move(pipe))) {}

  static void watch(int fd, int stopFD, const Handler& handler) {
    pollfd watched[2] = {{.fd = stopFD, .events = POLLIN, .revents = 0},
                         {.fd = fd, .events = POLLIN, .revents = 0}};
    bool resting = false;  // with an eye on the stop alone
    while (true) {
      const int ready = ::poll(watched, resting ? 1 : 2, resting ? restMs : -1);
      if (ready < 0 && errno != EINTR) return;
      if (ready > 0 && watched[0].revents != 0) return;
      resting = !resting && ready > 0 && !handler();
    }
  }

  const std::shared_ptr<Pipe> stop;  // shared with the thread
  std::thread thread;
};

// One connection, if there is still one. False when the system has no room for it (descriptors,
// memory): it stays in the backlog, and a loop that tried again at once would only spin.
bool UnixSocketServer::acceptOne(int listening, const std::weak_ptr<UnixSocketServer>& weak) {
  UniqueFd accepted = acceptConnection(listening);
  if (!accepted.valid()) return errno == EAGAIN || errno == ECONNABORTED || errno == EINTR;
  setNoSIGPIPE(accepted.get());
  raiseSocketBuffers(accepted.get());
  const int connection = accepted.release();  // the callback's; with none it stays open
  const auto server = weak.lock();
  if (server && server->onConnection) server->onConnection(connection);
  return true;
}

std::shared_ptr<UnixSocketServer> UnixSocketServer::make(std::string path) {
  return std::shared_ptr<UnixSocketServer>(new UnixSocketServer(std::move(path)));
}

UnixSocketServer::UnixSocketServer(std::string path) : socketPath(std::move(path)) {}

std::expected<void, UnixSocketError> UnixSocketServer::start() {
  if (!canNameFile(socketPath)) return callFailed(Kind::bind, ENOENT);
  ::unlink(socketPath.c_str());
  UniqueFd fd = makeUnixStreamSocket();
  if (!fd.valid()) return callFailed(Kind::create, errno);
  const auto address = makeAddr(socketPath);
  if (!address) {
    (void)fd.release();  // left open on purpose, as in connectUnixSocket
    return std::unexpected(address.error());
  }
  if (::bind(fd.get(), address->get(), address->length) != 0) {
    return callFailed(Kind::bind, errno);
  }
  ::chmod(socketPath.c_str(), 0600);
  if (::listen(fd.get(), backlog) != 0) return callFailed(Kind::listen, errno);
  setNonBlocking(fd.get(), true);  // an event whose connection has gone must not block the queue
  listenFD = fd.release();
  source = ReadinessSource::start(listenFD, [weak = weak_from_this(), listening = listenFD] {
    return acceptOne(listening, weak);
  });
  if (!source) {
    const int error = errno;
    stop();
    return callFailed(Kind::listen, error);
  }
  return {};
}

void UnixSocketServer::stop() {
  if (source) source->cancel();
  source = nullptr;
  if (listenFD >= 0) ::close(std::exchange(listenFD, -1));
  if (canNameFile(socketPath)) ::unlink(socketPath.c_str());
}

}  // namespace tarnel
