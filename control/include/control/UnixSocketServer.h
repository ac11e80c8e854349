// A listening Unix-domain stream socket.
//
// start() replaces whatever file stands at the path, without question; a caller that must not
// hijack a live socket looks first. An empty path and one with an inner NUL are bind(ENOENT). The
// socket file is 0600. Connections are accepted and handed over one at a time, in order, on the
// server's own queue, labelled "tarnel.tailsocket.accept". While the system has no room for a
// connection, the server looks again ten times a second.
//
// stop() waits for a running onConnection, unless that is what calls it. A second start() without a
// stop() in between listens anew at the path; what the first one opened stays, out of reach.
// Releasing the server does not stop it: call stop() first, or the descriptor and the file stay.
// Threads: start and stop from one thread at a time; onConnection is set before start.
#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "control/UnixSocket.h"

namespace tarnel {

class UnixSocketServer : public std::enable_shared_from_this<UnixSocketServer> {
 public:
  using OnConnection = std::function<void(int fd)>;  // owns the descriptor from then on

  [[nodiscard]] static std::shared_ptr<UnixSocketServer> make(std::string path);
  UnixSocketServer(const UnixSocketServer&) = delete;
  UnixSocketServer& operator=(const UnixSocketServer&) = delete;

  OnConnection onConnection;  // with none set an accepted descriptor stays open

  [[nodiscard]] std::expected<void, UnixSocketError> start();
  void stop();  // in any state, any number of times
  [[nodiscard]] const std::string& path() const { return socketPath; }

 private:
  class ReadinessSource;  // watches listenFD and calls the handler once for each readiness

  explicit UnixSocketServer(std::string path);
  static bool acceptOne(int listening, const std::weak_ptr<UnixSocketServer>& weak);

  const std::string socketPath;
  int listenFD = -1;  // closed by stop() alone, see above
  std::shared_ptr<ReadinessSource> source;
};

}  // namespace tarnel
