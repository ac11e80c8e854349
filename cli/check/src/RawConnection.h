// The bytes of a connection to a host, as they come: a client's own view would hide a host's
// faults.
//
// Never blocks past a deadline, which holds for a whole line or frame. Holds at most 16 MiB and one
// read of what it received. Threads: one at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <string>

#include "control/Bytes.h"
#include "control/ControlStreamFrame.h"
#include "control/ReceiveBuffer.h"
#include "control/UniqueFd.h"

namespace tarnel {

using Deadline = std::chrono::steady_clock::time_point;

// Why nothing more came.
enum class WireFault {
  closed,      // the host hung up
  silent,      // the deadline passed and nothing had come
  incomplete,  // the deadline passed, or the host hung up, in the middle of a line or frame
  tooLong,     // a line past 16 MiB, or a frame past 8 MiB
};

class RawConnection {
 public:
  // Waits for a place in the host's backlog; the error is the reason in words.
  [[nodiscard]] static std::expected<RawConnection, std::string> open(const std::string& socketPath,
                                                                      Deadline deadline);

  // False when the host has hung up or does not read.
  [[nodiscard]] bool send(BytesView bytes, Deadline deadline);

  // The next line, without its line feed.
  [[nodiscard]] std::expected<Bytes, WireFault> line(Deadline deadline);
  [[nodiscard]] std::expected<StreamFrame, WireFault> frame(Deadline deadline);
  // The byte that comes next, which is left there.
  [[nodiscard]] std::expected<char, WireFault> nextByte(Deadline deadline);

  // Looks for bytes until the deadline or until some come: all that is there, which may be nothing.
  [[nodiscard]] BytesView bytesUntil(Deadline deadline);
  // True once the host has hung up; what comes before that is thrown away.
  [[nodiscard]] bool hangsUpBy(Deadline deadline);

 private:
  explicit RawConnection(int connectedFD) : fd(connectedFD) {}
  [[nodiscard]] bool wait(short events, Deadline deadline) const;
  // Some bytes more.
  [[nodiscard]] std::expected<void, WireFault> more(Deadline deadline);

  UniqueFd fd;
  ReceiveBuffer received;
};

}  // namespace tarnel
