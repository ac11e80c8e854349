// One connection: reads request lines and writes an answer to each, in order, until the client
// hangs up or sends a line longer than ControlWire::maxFrameBytes with its line feed. A line that
// is no request is answered with an error and the connection goes on. Threads: one connection, one
// thread; its socket may be shut down from another. Borrows the descriptor.
#pragma once

#include "AnswerSink.h"
#include "HostResponder.h"
#include "control/Bytes.h"
#include "control/ReceiveBuffer.h"

namespace tarnel {

class HostConnection final : private AnswerSink {
 public:
  HostConnection(int connectedFD, HostResponder& answers) : fd(connectedFD), responder(answers) {}

  void serve();

 private:
  [[nodiscard]] bool answer(BytesView line);
  [[nodiscard]] bool send(BytesView bytes) override;
  [[nodiscard]] std::size_t sendFile(int file, std::int64_t offset, std::size_t length) override;
  [[nodiscard]] std::size_t mostUnderWay() const override;
  [[nodiscard]] bool isOver() const override;

  const int fd;
  HostResponder& responder;
  ReceiveBuffer received;
};

}  // namespace tarnel
