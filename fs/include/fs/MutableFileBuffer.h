// The volume's view of the system's read buffer.
// Lifetime: whoever starts a read keeps the buffer until the reply; the range is valid inside the
// closure only.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "control/Bytes.h"

namespace tarnel {

class MutableFileBuffer {
 public:
  MutableFileBuffer() = default;
  MutableFileBuffer(const MutableFileBuffer&) = delete;
  MutableFileBuffer& operator=(const MutableFileBuffer&) = delete;
  virtual ~MutableFileBuffer() = default;

  [[nodiscard]] virtual std::int64_t length() const = 0;  // bytes; a read's count is at most this
  // Hands over exactly length() bytes.
  virtual void withUnsafeMutableBytes(const std::function<void(std::span<char>)>& use) = 0;
  // Puts the chunk at a place up to which bytes have been put, never past the end; how many bytes.
  // Copies; a buffer whose memory nobody else has given it may take the chunk's instead.
  virtual std::int64_t put(std::int64_t place, Bytes chunk);
};

}  // namespace tarnel
