#include "HostConnection.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "AnswerLine.h"
#include "HostPlatform.h"
#include "control/ControlWire.h"
#include "control/PosixSocket.h"

namespace tarnel {

void HostConnection::serve() {
  while (true) {
    if (const auto line = received.takeLine()) {
      if (line->size() + 1 > ControlWire::maxFrameBytes || !answer(*line)) return;
      continue;
    }
    if (received.size() >= ControlWire::maxFrameBytes) return;
    const ssize_t count = received.awaitAndFill(fd, {});
    if (count == 0 || (count < 0 && errno != EINTR)) return;
  }
}

bool HostConnection::answer(BytesView line) {
  const auto request = ControlWire::decode<ControlRequest>(line);
  if (!request) return send(answerLine(Refusal::malformedRequest));
  return responder.answer(*request, *this);
}

bool HostConnection::send(BytesView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = writeWithoutSignal(fd, bytes);
    if (count > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

// The thread of a connection blocks every signal, as sendFileBytes wants it.
std::size_t HostConnection::sendFile(int file, std::int64_t offset, std::size_t length) {
  std::size_t sent = 0;
  while (sent < length) {
    const ssize_t count =
        sendFileBytes(fd, file, offset + static_cast<std::int64_t>(sent), length - sent);
    if (count > 0) {
      sent += static_cast<std::size_t>(count);
    } else if (count == 0 || errno != EINTR) {
      break;
    }
  }
  return sent;
}

// Of a socket that cannot be asked nothing is known: much.
std::size_t HostConnection::mostUnderWay() const {
  int bytes = 0;
  socklen_t length = sizeof bytes;
  if (::getsockopt(fd, SOL_SOCKET, SO_SNDBUF, &bytes, &length) != 0) return 1 << 30;
  return static_cast<std::size_t>(bytes);
}

bool HostConnection::isOver() const {
  pollfd watched{.fd = fd, .events = 0, .revents = 0};
  // Only a hang-up or an error comes without having been asked for.
  return ::poll(&watched, 1, 0) > 0;
}

}  // namespace tarnel
