#include "fs/MutableFileBuffer.h"

#include <algorithm>
#include <cstring>

namespace tarnel {

std::int64_t MutableFileBuffer::put(std::int64_t place, Bytes chunk) {
  std::int64_t copied = 0;
  withUnsafeMutableBytes([&](std::span<char> bytes) {
    const std::span<char> room = bytes.subspan(static_cast<std::size_t>(place));
    const std::size_t count = std::min(room.size(), chunk.size());
    if (count > 0) std::memcpy(room.data(), chunk.data(), count);
    copied = static_cast<std::int64_t>(count);
  });
  return copied;
}

}  // namespace tarnel
