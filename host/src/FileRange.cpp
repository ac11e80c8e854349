#include "FileRange.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace tarnel {

HostResult<std::size_t> readRange(int fd, std::int64_t offset, std::span<char> out) {
  // No file has bytes behind the largest offset, and the system calls that an invalid argument.
  const std::int64_t last = std::numeric_limits<off_t>::max();
  const auto wanted =
      static_cast<std::size_t>(std::min(static_cast<std::int64_t>(out.size()), last - offset));
  std::size_t got = 0;
  while (got < wanted) {
    const ssize_t count =
        ::pread(fd, out.data() + got, wanted - got, offset + static_cast<off_t>(got));
    if (count == 0) break;
    if (count > 0) {
      got += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return std::unexpected(refusalFor(errno));
    }
  }
  return got;
}

HostResult<BytesView> readRange(int fd, std::int64_t offset, std::int64_t length, Bytes& buffer) {
  const auto wanted = static_cast<std::size_t>(length);
  if (buffer.size() < wanted) buffer.resize(wanted);
  const auto got = readRange(fd, offset, {buffer.data(), wanted});
  if (!got) return std::unexpected(got.error());
  return BytesView(buffer).substr(0, *got);
}

}  // namespace tarnel
