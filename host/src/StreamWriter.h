// Writes the frames of a streamed answer through one buffer, which the connection keeps.
//
// Frames are gathered until they fill the buffer, so that many small files cost few system calls; a
// small file's bytes are read straight behind the head of their frame. The socket takes those of a
// large one from the system's own memory, without any copy here. Such a frame's length is promised
// before its bytes are there, and its bytes can change until the reader has them: should the file
// become shorter meanwhile, zeros stand where its end was, and the file has failed. So the end of a
// large file is copied: who can still read the last of it knows that it did not become shorter
// while anything else was under way.
// Once the client has gone everything is dropped. Threads: one.
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

  // Data frames of at most ControlStreamFrame::window bytes with what the file holds from `offset`,
  // `length` bytes of it. A refusal when they were not all the file's own.
  [[nodiscard]] std::optional<Refusal> file(int fd, std::int64_t offset, std::int64_t length);
  // The same for a file of which nobody knows how long it is, up to `most` bytes: no frame promises
  // more than was read, and the end is where it is found.
  [[nodiscard]] std::optional<Refusal> toTheEnd(int fd, std::int64_t offset, std::int64_t most);

  // Sends what is left. False when the client has gone.
  [[nodiscard]] bool finish();
  [[nodiscard]] bool hasGone() const { return gone; }

 private:
  struct FileSent {
    std::int64_t bytes = 0;  // the file's own
    std::optional<Refusal> failure = {};
  };
  // Fewer bytes than `length` when the file ends or fails before, or when the client has gone.
  template <class SendPiece>
  [[nodiscard]] FileSent inPieces(std::int64_t offset, std::int64_t length, SendPiece sendPiece);
  // One frame of `length` bytes.
  [[nodiscard]] FileSent gather(int fd, std::int64_t offset, std::size_t length);
  [[nodiscard]] FileSent handOver(int fd, std::int64_t offset, std::size_t length);
  void flush();
  void writeHead(std::uint8_t tag, std::size_t length);
  void send(BytesView bytes);

  AnswerSink& sink;
  const std::int64_t copiedEnd;  // bytes of a large file's end
  std::size_t used = 0;          // of sink.fileBytes
  bool gone = false;
};

}  // namespace tarnel
