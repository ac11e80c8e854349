#include "get/HostStream.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "control/ControlClient.h"
#include "control/ControlStreamFrame.h"
#include "control/ControlWire.h"
#include "control/PosixSocket.h"
#include "control/Text.h"
#include "control/UnixSocket.h"

namespace tarnel {
namespace {

using Kind = ControlClientError::Kind;

CopyError connectionError(Kind kind, int error) {
  return {.error = error, .detail = description(ControlClientError{.kind = kind})};
}

// A kept connection on which a request may go out: nothing has come that nobody asked for, and the
// host has not hung up.
bool isQuiet(int fd) {
  char byte = 0;
  return ::recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 && errno == EAGAIN;
}

}  // namespace

HostStream::HostStream(std::string path, Interruption& signals)
    : socketPath(std::move(path)),
      interruption(signals),
      buffer(std::make_unique_for_overwrite<char[]>(bufferBytes)) {}

HostStream::~HostStream() { drop(); }

void HostStream::drop() {
  if (socket.valid()) interruption.removeSocket(socket.get());
  socket.reset();
  begin = end = left = 0;
}

std::unexpected<CopyError> HostStream::lost(CopyError error) {
  drop();
  if (interruption.raised()) return copyFailure(EINTR);
  return std::unexpected(std::move(error));
}

std::unexpected<CopyError> HostStream::lostSocket(bool timedOut) {
  if (!timedOut) return lost(connectionError(Kind::connectionClosed, ENOTCONN));
  ++silences;
  return lost(connectionError(Kind::timedOut, ETIMEDOUT));
}

CopyResult<void> HostStream::connect() {
  const auto fd = connectUnixSocket(socketPath);
  if (!fd) return copyFailure(ENOTCONN, description(fd.error()));
  socket.reset(*fd);
  if (!interruption.addSocket(*fd)) return lost({.error = EINTR});
  currentDeadline = 0;
  return {};
}

CopyResult<void> HostStream::ask(const ControlRequest& request, double deadline) {
  const auto frame = ControlWire::encode(request);
  if (!frame) return copyFailure(EILSEQ);  // a name that is not UTF-8 cannot be asked for
  if (silences >= maxSilences) return std::unexpected(connectionError(Kind::timedOut, ETIMEDOUT));
  if (socket.valid() && (begin != end || left != 0 || !isQuiet(socket.get()))) drop();
  if (!socket.valid()) {
    if (auto connected = connect(); !connected) return connected;
  }
  if (deadline != currentDeadline) {
    ControlClient(socket.get()).setDeadline(deadline);
    currentDeadline = deadline;
  }
  return writeAll(*frame);
}

CopyResult<void> HostStream::writeAll(BytesView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = writeWithoutSignal(socket.get(), bytes);
    if (written <= 0) {
      return lostSocket(errno == EAGAIN);
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

CopyResult<void> HostStream::fill(std::size_t limit) {
  if (!socket.valid()) return copyFailure(ENOTCONN);
  errno = 0;  // an orderly end of stream is no time-out, whatever happened before
  const ssize_t got = ::read(socket.get(), buffer.get() + end, std::min(limit, bufferBytes - end));
  if (got > 0) {
    end += static_cast<std::size_t>(got);
    silences = 0;
    return {};
  }
  return lostSocket(got < 0 && errno == EAGAIN);
}

CopyResult<void> HostStream::need(std::size_t count) {
  if (begin == end) begin = end = 0;
  if (begin + count > bufferBytes) {
    std::memmove(buffer.get(), buffer.get() + begin, end - begin);
    end -= begin;
    begin = 0;
  }
  while (end - begin < count) {
    if (auto filled = fill(bufferBytes); !filled) return filled;
  }
  return {};
}

CopyResult<bool> HostStream::answersInFrames() {
  if (auto first = need(1); !first) return std::unexpected(first.error());
  return !ControlStreamFrame::beginsLine(buffer[begin]);
}

CopyResult<Bytes> HostStream::readLine(std::size_t limit) {
  Bytes line;
  while (true) {
    if (auto more = need(1); !more) return std::unexpected(more.error());
    const BytesView piece = buffered();
    const std::size_t feed = piece.find('\n');
    line.append(piece.substr(0, feed));
    begin += std::min(feed, piece.size());
    if (line.size() >= limit) {
      return lost(connectionError(Kind::oversizedResponse, EIO));
    }
    if (feed == BytesView::npos) continue;
    ++begin;
    return line;
  }
}

CopyResult<HostStream::Head> HostStream::readHead() {
  while (left > 0) {
    if (auto skipped = readPiece(); !skipped) return std::unexpected(skipped.error());
  }
  if (auto whole = need(ControlStreamFrame::headBytes); !whole) {
    return std::unexpected(whole.error());
  }
  const Head head = ControlStreamFrame::readHead(buffered());
  if (head.length > ControlStreamFrame::maxBodyBytes) {
    return lost({.error = EIO, .detail = "a frame of " + std::to_string(head.length) + " bytes"});
  }
  begin += ControlStreamFrame::headBytes;
  left = head.length;
  return head;
}

CopyResult<BytesView> HostStream::readPiece() {
  if (left == 0) return BytesView();
  if (begin == end) {
    begin = end = 0;
    if (auto filled = fill(bufferBytes); !filled) return std::unexpected(filled.error());
  }
  const BytesView piece = buffered().substr(0, left);
  begin += piece.size();
  left -= piece.size();
  return piece;
}

CopyResult<Bytes> HostStream::readText(std::size_t limit) {
  Bytes text;
  while (left > 0) {
    const auto piece = readPiece();
    if (!piece) return std::unexpected(piece.error());
    text.append(piece->substr(0, limit - text.size()));
  }
  return text;
}

CopyResult<CopyError> HostStream::readRefusal() {
  constexpr std::size_t maxMessageBytes = 1'000;
  const auto message = readText(maxMessageBytes);
  if (!message) return std::unexpected(message.error());
  return refusalError(repairedUtf8(*message));
}

}  // namespace tarnel
