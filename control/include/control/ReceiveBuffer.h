// The bytes received from a socket and not yet consumed, oldest first. Both sides read with it.
//
// Looking for a line feed goes on where the last look ended, so a line that arrives in many pieces
// is scanned once. A line that is all the buffer holds is moved out without a copy. Threads: one
// buffer, one thread.
#pragma once

#include <sys/time.h>
#include <sys/types.h>

#include <cstddef>
#include <optional>

#include "control/Bytes.h"

namespace tarnel {

class ReceiveBuffer {
 public:
  // The most bytes that one read asks for.
  static constexpr std::size_t readSize = 65'536;

  // One read of at most readSize bytes, appended. What read() returned; errno as it left it.
  [[nodiscard]] ssize_t fill(int fd);
  // The same for a blocking socket. While nothing is held the bytes are probably not there yet: then
  // it sleeps until they are, for the limit at the most, of which zero is none (sleepUntilReadable).
  [[nodiscard]] ssize_t awaitAndFill(int fd, timeval limit);
  void append(BytesView bytes);

  // The bytes before the first line feed, which is consumed with them; nullopt if there is none.
  [[nodiscard]] std::optional<Bytes> takeLine();

  [[nodiscard]] std::size_t size() const { return bytes.size() - start; }
  [[nodiscard]] BytesView view() const { return BytesView(bytes).substr(start); }
  void consume(std::size_t count);

 private:
  static constexpr std::size_t maxExpected = 1 << 20;

  Bytes bytes;
  std::size_t start = 0;     // consumed bytes at the front
  std::size_t scanned = 0;   // no line feed in [start, scanned)
  std::size_t expected = 0;  // room for a line like the last one
};

}  // namespace tarnel
