#include "control/ReceiveBuffer.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "control/PosixSocket.h"

namespace tarnel {

ssize_t ReceiveBuffer::fill(int fd) {
  const std::size_t before = bytes.size();
  // The next line is probably about as long as the last. Past that, grows by half at least, so that
  // a line in many pieces is copied a bounded number of times.
  if (bytes.capacity() < before + readSize) {
    bytes.reserve(std::max({before + readSize, before + before / 2, expected}));
  }
  ssize_t got = 0;
  bytes.resize_and_overwrite(before + readSize, [&](char* data, std::size_t) {
    got = ::read(fd, data + before, readSize);
    return got > 0 ? before + static_cast<std::size_t>(got) : before;
  });
  return got;
}

ssize_t ReceiveBuffer::awaitAndFill(int fd, timeval limit) {
  if (size() == 0 && !sleepUntilReadable(fd, limit)) return -1;
  return fill(fd);
}

void ReceiveBuffer::append(BytesView more) { bytes.append(more); }

std::optional<Bytes> ReceiveBuffer::takeLine() {
  const std::size_t from = std::max(start, scanned);
  const void* found = std::memchr(bytes.data() + from, '\n', bytes.size() - from);
  if (found == nullptr) {
    scanned = bytes.size();
    return std::nullopt;
  }
  const auto end = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
  expected = std::min(end - start + readSize, maxExpected);
  if (start == 0 && end + 1 == bytes.size()) {
    bytes.pop_back();
    scanned = 0;
    return std::exchange(bytes, Bytes());
  }
  Bytes line = bytes.substr(start, end - start);
  consume(end + 1 - start);
  return line;
}

void ReceiveBuffer::consume(std::size_t count) {
  start += count;
  scanned = std::max(scanned, start);
  if (start == bytes.size()) {
    bytes.clear();
    start = scanned = 0;
  } else if (start >= readSize && start >= bytes.size() / 2) {
    bytes.erase(0, start);
    scanned -= start;
    start = 0;
  }
}

}  // namespace tarnel
