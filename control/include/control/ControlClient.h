// One connection to the host: writes a request, reads the answer. Synchronous and blocking; time
// limits are socket options that the owner sets for each request.
//
// There are no request identifiers: answers belong to requests by order alone. After any
// ControlClientError the position in the stream is unknown and the client must not be used again.
// After a coding error it may be: the line was consumed whole.
// Lifetime: releasing a client does not close its descriptor; the owner calls close().
// Threads: one at a time; shutdownForAbort alone may come from another thread.
#pragma once

#include <sys/time.h>

#include <expected>
#include <optional>
#include <string>
#include <variant>

#include "control/CodingError.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/ControlStreamFrame.h"
#include "control/ReceiveBuffer.h"
#include "control/UnixSocket.h"

namespace tarnel {

struct ControlClientError {
  enum class Kind { malformedResponse, connectionClosed, oversizedResponse, timedOut };
  Kind kind;
  std::string detail = {};  // malformedResponse only

  friend bool operator==(const ControlClientError& a, const ControlClientError& b);
};
[[nodiscard]] std::string description(const ControlClientError& error);

// Until the request is written, and with the answer and its decoding.
using ControlExchangeFailure = std::variant<ControlClientError, EncodingError>;
using ControlClientFailure = std::variant<ControlClientError, EncodingError, DecodingError>;

class ControlClient {
 public:
  [[nodiscard]] static std::expected<ControlClient, UnixSocketError> connect(
      const std::string& socketPath);
  explicit ControlClient(int connectedFD) : fd(connectedFD) {}

  // The receive and the send time limit, in seconds; 0 means none. A value that is not finite or
  // does not fit the socket's time structure is a programming error and ends the process.
  void setDeadline(double seconds);

  // One request, one response line, decoded.
  [[nodiscard]] std::expected<ControlResponse, ControlClientFailure> send(
      const ControlRequest& request);
  // Its two halves, for a caller who has something to do while the host works: write the request,
  // then wait for the response line, which is returned as it came.
  [[nodiscard]] std::expected<void, ControlExchangeFailure> sendRaw(const ControlRequest& request);
  [[nodiscard]] std::expected<Bytes, ControlClientError> readLine();

  // After sendRaw of a request whose answer is a stream, these instead of readLine.
  [[nodiscard]] std::expected<StreamFrame, ControlClientError> readFrame();
  // Waits for a stream's first byte. A host that does not serve the operation at all answers with a
  // line of JSON instead of frames, and no tag begins such a line: then its response, and the
  // connection is in step. nullopt: frames follow.
  [[nodiscard]] std::expected<std::optional<ControlResponse>, ControlClientFailure> streamRefusal();

  // Bytes that came without a request: this host does not alternate. Looks, never waits.
  [[nodiscard]] bool hasUnrequestedBytes() const;

  void close();
  // Makes a read or write that is blocked in another thread return at once; does not close.
  void shutdownForAbort();

 private:
  [[nodiscard]] std::expected<void, ControlClientError> writeAll(BytesView bytes);
  [[nodiscard]] std::expected<void, ControlClientError> refill();
  [[nodiscard]] std::expected<ControlResponse, ControlClientFailure> readResponse();

  int fd;  // closed by close() alone
  timeval deadline{};
  ReceiveBuffer buffer;
};

}  // namespace tarnel
