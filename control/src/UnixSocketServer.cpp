#include "control/UnixSocketServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "UnixAddress.h"
#include "control/PosixSocket.h"
#include "control/Thread.h"
#include "control/UniqueFd.h"

namespace tarnel {
namespace {

constexpr int backlog = 8;
constexpr const char* queueLabel = "tarnel.tailsocket.accept";

std::unexpected<UnixSocketError> failure(UnixSocketError::Kind kind, int error) {
  return std::unexpected(UnixSocketError{.kind = kind, .path = {}, .error = error});
}

}  // namespace

// One thread that waits for the descriptor to become readable and calls the handler, once for each
// event, until it is cancelled through a pipe.
class UnixSocketServer::ReadinessSource {
 public:
  [[nodiscard]] static std::shared_ptr<ReadinessSource> start(int fd,
                                                              std::function<void()> handler) {
    int ends[2];
    if (::pipe(ends) != 0) return nullptr;
    auto made = std::shared_ptr<ReadinessSource>(new ReadinessSource(UniqueFd(ends[1])));
    made->thread = startThread(
        queueLabel, [fd, stop = std::make_shared<UniqueFd>(ends[0]), handler = std::move(handler)] {
          pollfd watched[2] = {{.fd = fd, .events = POLLIN, .revents = 0},
                               {.fd = stop->get(), .events = 0, .revents = 0}};
          while (::poll(watched, 2, -1) >= 0 || errno == EINTR) {
            if (watched[1].revents != 0) return;
            if (watched[0].revents != 0) handler();
          }
        });
    return made;
  }

  // Returns when no handler runs any more, unless a handler itself cancels.
  void cancel() {
    cancelled.reset();
    if (!thread.joinable()) return;
    if (thread.get_id() == std::this_thread::get_id()) {
      thread.detach();
    } else {
      thread.join();
    }
  }

  ~ReadinessSource() {
    if (thread.joinable()) thread.detach();
    (void)cancelled.release();  // a server that was only released goes on listening
  }

 private:
  explicit ReadinessSource(UniqueFd writeEnd) : cancelled(std::move(writeEnd)) {}

  UniqueFd cancelled;  // closing it ends the thread
  std::thread thread;
};

std::shared_ptr<UnixSocketServer> UnixSocketServer::make(std::string path) {
  return std::shared_ptr<UnixSocketServer>(new UnixSocketServer(std::move(path)));
}

UnixSocketServer::UnixSocketServer(std::string path) : socketPath(std::move(path)) {}

std::expected<void, UnixSocketError> UnixSocketServer::start() {
  ::unlink(socketPath.c_str());
  UniqueFd fd = makeUnixStreamSocket();
  if (!fd.valid()) return failure(UnixSocketError::Kind::create, errno);
  const auto address = makeAddr(socketPath);
  if (!address) {
    (void)fd.release();  // left open on purpose, as in connectUnixSocket
    return std::unexpected(address.error());
  }
  if (::bind(fd.get(), address->get(), address->length) != 0) {
    return failure(UnixSocketError::Kind::bind, errno);
  }
  ::chmod(socketPath.c_str(), 0600);
  if (::listen(fd.get(), backlog) != 0) return failure(UnixSocketError::Kind::listen, errno);
  setNonBlocking(fd.get(), true);  // an event whose connection has gone must not block the queue
  listenFD = fd.release();
  source = ReadinessSource::start(listenFD, [weak = weak_from_this(), listening = listenFD] {
    UniqueFd accepted = acceptConnection(listening);
    if (!accepted.valid()) return;  // the next event tries again
    setNoSIGPIPE(accepted.get());
    raiseSocketBuffers(accepted.get());
    const int connection = accepted.release();  // the callback's; with none it stays open
    const auto server = weak.lock();
    if (server && server->onConnection) server->onConnection(connection);
  });
  if (!source) {
    const int error = errno;
    stop();
    return failure(UnixSocketError::Kind::listen, error);
  }
  return {};
}

void UnixSocketServer::stop() {
  if (source) source->cancel();
  source = nullptr;
  if (listenFD >= 0) ::close(std::exchange(listenFD, -1));
  ::unlink(socketPath.c_str());
}

}  // namespace tarnel
