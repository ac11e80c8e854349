// Writes the frames of a streamed answer through one buffer, which the connection keeps.
//
// Frames are gathered until they fill the buffer, so that many small files cost few system calls; a
// file's bytes are read straight behind the head of their frame and are not copied again before the
// socket takes them. Once the client has gone everything is dropped. Threads: one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "AnswerSink.h"
#include "control/Bytes.h"
#include "host/Refusal.h"

namespace tarnel {

class StreamWriter {
 public:
  explicit StreamWriter(AnswerSink& answerSink);

  void frame(std::uint8_t tag, BytesView payload);
  void error(Refusal refusal);

  struct FileSent {
    std::int64_t bytes = 0;
    std::optional<Refusal> failure = {};
  };
  // Data frames of at most ControlStreamFrame::window bytes with what the file holds from `offset`:
  // `length` bytes, fewer when it ends or fails before, or when the client has gone.
  [[nodiscard]] FileSent file(int fd, std::int64_t offset, std::int64_t length);

  // Sends what is left. False when the client has gone.
  [[nodiscard]] bool finish();
  [[nodiscard]] bool hasGone() const { return gone; }

 private:
  void flush();
  void writeHead(std::uint8_t tag, std::size_t length);
  void send(BytesView bytes);

  AnswerSink& sink;
  std::size_t used = 0;  // of sink.fileBytes
  bool gone = false;
};

}  // namespace tarnel
