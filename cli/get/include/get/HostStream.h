// One connection to the host on which a stream's bytes are read in place: the head of each frame,
// then its payload piece by piece out of the one receive buffer, so that a file's bytes are copied
// once here (out of the socket) before they are written. Lines of JSON, which answer what is not a
// stream, come the same way.
//
// The host is not trusted: a frame's length is bounded before its payload is read, and a connection
// on which bytes stand that no request asked for is given up before the next request, since every
// later answer on it would be another's. So is one that the host has closed meanwhile. After any
// failure the connection is gone; the next request makes a new one. A host that was silent
// maxSilences times in a row is not asked any more: each file of a copy would wait for its time-out.
// Threads: one; an Interruption wakes it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "control/Bytes.h"
#include "control/ControlRequest.h"
#include "control/ControlStreamFrame.h"
#include "control/UniqueFd.h"
#include "get/CopyError.h"
#include "get/Interruption.h"

namespace tarnel {

class HostStream {
 public:
  static constexpr std::size_t bufferBytes = 262'144;
  // Frames of a stream that carry nothing; a host that sends more means it to have no end.
  static constexpr int maxEmptyFrames = 1'000;
  static constexpr int maxSilences = 2;

  using Head = ControlStreamFrame::Head;

  HostStream(std::string socketPath, Interruption& interruption);
  ~HostStream();
  HostStream(const HostStream&) = delete;
  HostStream& operator=(const HostStream&) = delete;

  // Writes a request, on a new connection if need be. deadline: seconds of silence.
  [[nodiscard]] CopyResult<void> ask(const ControlRequest& request, double deadline);

  // After `ask`: the answer begins with a frame, not with a line of JSON.
  [[nodiscard]] CopyResult<bool> answersInFrames();
  // The answer's line, without its line feed, of less than `limit` bytes.
  [[nodiscard]] CopyResult<Bytes> readLine(std::size_t limit);

  // The next frame's head, whose length is at most ControlStreamFrame::maxBodyBytes. What is left
  // of the payload before is skipped.
  [[nodiscard]] CopyResult<Head> readHead();
  // Bytes of the payload that were not read yet.
  [[nodiscard]] std::size_t remaining() const { return left; }
  // Some more of the payload, at least one byte while any remains; valid until the next call.
  [[nodiscard]] CopyResult<BytesView> readPiece();
  // The rest of the payload, cut to `limit` bytes.
  [[nodiscard]] CopyResult<Bytes> readText(std::size_t limit);

  // The rest of an error frame's payload, as the failure that it tells.
  [[nodiscard]] CopyResult<CopyError> readRefusal();

  // Gives the connection up, in the midst of whatever it does.
  void drop();

 private:
  [[nodiscard]] CopyResult<void> connect();
  [[nodiscard]] CopyResult<void> writeAll(BytesView bytes);
  // At least `count` bytes in the buffer, in one piece.
  [[nodiscard]] CopyResult<void> need(std::size_t count);
  // One read into the buffer, behind what it holds, of at most `limit` bytes.
  [[nodiscard]] CopyResult<void> fill(std::size_t limit);
  [[nodiscard]] std::unexpected<CopyError> lost(CopyError error);
  [[nodiscard]] std::unexpected<CopyError> lostSocket(bool timedOut);
  [[nodiscard]] BytesView buffered() const { return {buffer.get() + begin, end - begin}; }

  const std::string socketPath;
  Interruption& interruption;
  UniqueFd socket;
  std::unique_ptr<char[]> buffer;
  std::size_t begin = 0;  // [begin, end) was received and not consumed
  std::size_t end = 0;
  std::size_t left = 0;
  double currentDeadline = 0;
  int silences = 0;  // time-outs in a row
};

}  // namespace tarnel
