// Socket buffers of 8 KiB for every socket of this program, as some systems give them unless asked.
//
// Takes the place of setsockopt: what asks for a buffer gets at most `limit`, and each such request
// is kept. With `refuseAbove` a larger one fails with ENOBUFS instead, as some systems do.
// Threads: any.
#pragma once

#include <cstddef>
#include <vector>

namespace tarnel::test {

class SmallSocketBuffers {
 public:
  static constexpr int limit = 8 << 10;  // bytes

  struct Request {
    int fd;
    int name;  // SO_SNDBUF or SO_RCVBUF
    int bytes;
    friend bool operator==(const Request&, const Request&) = default;
  };

  SmallSocketBuffers();  // in force until its end; one at a time
  ~SmallSocketBuffers();
  SmallSocketBuffers(const SmallSocketBuffers&) = delete;
  SmallSocketBuffers& operator=(const SmallSocketBuffers&) = delete;

  void refuseAbove(int bytes);
  [[nodiscard]] std::vector<Request> requests() const;
};

}  // namespace tarnel::test
