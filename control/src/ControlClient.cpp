#include "control/ControlClient.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "control/ControlWire.h"
#include "control/PosixSocket.h"
#include "control/Text.h"

namespace tarnel {
namespace {

using Kind = ControlClientError::Kind;

std::unexpected<ControlClientError> failure(Kind kind) {
  return std::unexpected(ControlClientError{.kind = kind});
}

// What a socket call that moved no bytes means. errno is read in every case, an orderly end of
// stream included: there it is whatever the thread last had, and the outcome is one of the two all
// the same.
std::unexpected<ControlClientError> nothingMoved() {
  return failure(errno == EAGAIN ? Kind::timedOut : Kind::connectionClosed);
}

// The conversions end the process on a value that does not fit: a deadline is ours, never received.
timeval socketTime(double seconds) {
  const double whole = std::floor(seconds);
  if (!(whole >= -0x1p63 && whole < 0x1p63)) std::abort();  // also without a number
  timeval time{};
  time.tv_sec = static_cast<decltype(time.tv_sec)>(whole);
  time.tv_usec = static_cast<decltype(time.tv_usec)>((seconds - whole) * 1'000'000);
  return time;
}

}  // namespace

bool operator==(const ControlClientError& a, const ControlClientError& b) {
  return a.kind == b.kind && textEqual(a.detail, b.detail);
}

std::string description(const ControlClientError& error) {
  switch (error.kind) {
    case Kind::malformedResponse:
      return "malformed response from Tarnel (" + error.detail + ")";
    case Kind::connectionClosed:
      return "connection to Tarnel closed";
    case Kind::oversizedResponse:
      return "oversized response from Tarnel";
    case Kind::timedOut:
      return "control socket timed out";
  }
  __builtin_unreachable();
}

std::expected<ControlClient, UnixSocketError> ControlClient::connect(
    const std::string& socketPath) {
  const auto fd = connectUnixSocket(socketPath);
  if (!fd) return std::unexpected(fd.error());
  return ControlClient(*fd);
}

void ControlClient::setDeadline(double seconds) {
  deadline = socketTime(seconds);
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &deadline, sizeof deadline);
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &deadline, sizeof deadline);
}

std::expected<ControlResponse, ControlClientFailure> ControlClient::send(
    const ControlRequest& request) {
  if (auto sent = sendRaw(request); !sent) {
    using Sent = std::expected<ControlResponse, ControlClientFailure>;
    return std::visit([](auto& error) -> Sent { return std::unexpected(std::move(error)); },
                      sent.error());
  }
  return readResponse();
}

std::expected<void, ControlExchangeFailure> ControlClient::sendRaw(const ControlRequest& request) {
  const auto frame = ControlWire::encode(request);
  if (!frame) return std::unexpected(frame.error());
  if (auto written = writeAll(*frame); !written) return std::unexpected(written.error());
  return {};
}

std::expected<StreamFrame, ControlClientError> ControlClient::readFrame() {
  while (true) {
    auto frame = ControlStreamFrame::parse(buffer);
    if (!frame) {
      return std::unexpected(ControlClientError{.kind = Kind::malformedResponse,
                                                .detail = description(frame.error())});
    }
    if (*frame) return std::move(**frame);
    if (auto filled = refill(); !filled) return std::unexpected(filled.error());
  }
}

std::expected<std::optional<ControlResponse>, ControlClientFailure> ControlClient::streamRefusal() {
  while (buffer.size() == 0) {
    if (auto filled = refill(); !filled) return std::unexpected(filled.error());
  }
  if (!ControlStreamFrame::beginsLine(buffer.view().front())) return std::nullopt;
  auto response = readResponse();
  if (!response) return std::unexpected(std::move(response.error()));
  return std::move(*response);
}

bool ControlClient::hasUnrequestedBytes() const { return buffer.size() > 0 || hasReadableByte(fd); }

void ControlClient::close() { ::close(fd); }

void ControlClient::shutdownForAbort() { ::shutdown(fd, SHUT_RDWR); }

std::expected<void, ControlClientError> ControlClient::writeAll(BytesView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = writeWithoutSignal(fd, bytes);
    if (written <= 0) return nothingMoved();
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

std::expected<void, ControlClientError> ControlClient::refill() {
  if (buffer.awaitAndFill(fd, deadline) > 0) return {};
  return nothingMoved();
}

std::expected<Bytes, ControlClientError> ControlClient::readLine() {
  if (auto line = buffer.takeLine()) return std::move(*line);
  while (true) {
    if (auto filled = refill(); !filled) return std::unexpected(filled.error());
    // Counts the whole buffer, also when this read brought the line feed.
    if (buffer.size() > ControlWire::maxFrameBytes) return failure(Kind::oversizedResponse);
    if (auto line = buffer.takeLine()) return std::move(*line);
  }
}

std::expected<ControlResponse, ControlClientFailure> ControlClient::readResponse() {
  const auto line = readLine();
  if (!line) return std::unexpected(line.error());
  auto response = ControlWire::decode<ControlResponse>(*line);
  if (!response) return std::unexpected(std::move(response.error()));
  return std::move(*response);
}

}  // namespace tarnel
