// The bytes of a connection to the host, without a client's own view of them.
// Waiting is bounded.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <optional>
#include <string>

#include "control/PosixSocket.h"
#include "control/ReceiveBuffer.h"
#include "control/UniqueFd.h"
#include "control/UnixSocket.h"
#include "support/Eventually.h"

namespace tarnel::test {

class RawClient {
 public:
  explicit RawClient(const std::string& socketPath) : fd(connectPatiently(socketPath)) {}

  [[nodiscard]] bool connected() const { return fd.valid(); }
  void hangUp() { fd.reset(); }

  // False when the host has hung up.
  bool send(BytesView bytes) {
    while (!bytes.empty()) {
      const ssize_t count = writeWithoutSignal(fd.get(), bytes);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  // The next line without its line feed; nullopt when the host hangs up or is silent for too long.
  std::optional<std::string> line() {
    while (true) {
      if (auto found = received.takeLine()) return found;
      if (!readable() || received.fill(fd.get()) <= 0) return std::nullopt;
    }
  }
  // The answer to one request.
  std::optional<std::string> ask(const std::string& request) {
    if (!send(request + "\n")) return std::nullopt;
    return line();
  }
  // True once something can be read; nothing is.
  [[nodiscard]] bool sawFirstBytes() const { return readable(); }
  // True once the host has hung up with nothing left to read.
  bool sawHangUp() { return readable() && received.fill(fd.get()) <= 0; }
  // The connection, for a client that takes it over.
  int release() { return fd.release(); }

 private:
  static constexpr int patienceMs = 20'000;

  // A full backlog is no reason to fail: the host is about to take the next one from it.
  static int connectPatiently(const std::string& socketPath) {
    int connected = -1;
    (void)eventually([&] {
      const auto result = connectUnixSocket(socketPath);
      connected = result.value_or(-1);
      return result || result.error().error != EAGAIN;
    });
    return connected;
  }

  bool readable() const {
    pollfd watched{.fd = fd.get(), .events = POLLIN, .revents = 0};
    return ::poll(&watched, 1, patienceMs) == 1;
  }

  UniqueFd fd;
  ReceiveBuffer received;
};

}  // namespace tarnel::test
