// A read buffer in memory. It starts full of `untouched`, so that a byte nobody wrote shows.
// Threads: one read at a time; look at it after the reply.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "fs/MutableFileBuffer.h"

namespace tarnel::test {

class ByteBuffer final : public MutableFileBuffer {
 public:
  static constexpr char untouched = '~';

  explicit ByteBuffer(std::size_t size) : held(size, untouched) {}

  [[nodiscard]] std::int64_t length() const override {
    return static_cast<std::int64_t>(held.size());
  }
  void withUnsafeMutableBytes(const std::function<void(std::span<char>)>& use) override {
    use(std::span<char>(held));
  }

  [[nodiscard]] std::string_view bytes() const { return held; }
  [[nodiscard]] std::string_view first(std::int64_t count) const {
    return bytes().substr(0, static_cast<std::size_t>(count));
  }

 private:
  std::string held;
};

}  // namespace tarnel::test
