// Why one file or folder could not be copied. Threads: plain values.
#pragma once

#include <cerrno>
#include <expected>
#include <string>
#include <string_view>
#include <utility>

namespace tarnel {

struct CopyError {
  int error = EIO;          // this system's number
  std::string detail = {};  // what the number does not say; may be empty

  friend bool operator==(const CopyError&, const CopyError&) = default;
};
// "ENOENT", "EIO (more bytes than announced)".
[[nodiscard]] std::string description(const CopyError& error);

template <class T>
using CopyResult = std::expected<T, CopyError>;

[[nodiscard]] inline std::unexpected<CopyError> copyFailure(int error, std::string detail = {}) {
  return std::unexpected(CopyError{.error = error, .detail = std::move(detail)});
}
// From errno.
[[nodiscard]] inline std::unexpected<CopyError> callFailure() { return copyFailure(errno); }

// What a host says about one of its files, as the number that a reader of the volume would get.
[[nodiscard]] CopyError refusalError(std::string_view message);

}  // namespace tarnel
