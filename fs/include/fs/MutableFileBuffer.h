// The volume's view of the system's read buffer.
// Lifetime: whoever starts a read keeps the buffer until the reply; the range is valid inside the
// closure only.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

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
};

}  // namespace tarnel
