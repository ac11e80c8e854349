// The one owner of a descriptor. Move-only; closes in the destructor. Tested with `valid()`, never
// by conversion: 0 is a descriptor like any other.
#pragma once

#include <utility>

namespace tarnel {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int descriptor) : fd(descriptor) {}
  UniqueFd(UniqueFd&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    if (this != &other) reset(std::exchange(other.fd, -1));
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(); }

  [[nodiscard]] int get() const { return fd; }
  [[nodiscard]] bool valid() const { return fd >= 0; }
  [[nodiscard]] int release() { return std::exchange(fd, -1); }
  void reset(int descriptor = -1);  // closes what it held; keeps errno
  operator bool() const = delete;

 private:
  int fd = -1;
};

}  // namespace tarnel
