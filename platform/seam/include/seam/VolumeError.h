// The errors that a volume replies with. Numbers are Darwin's on every system; an adapter for
// another system translates them.
#pragma once

#include <cstdint>
#include <optional>

namespace tarnel {

struct VolumeError {
  enum class Domain { posix, fileSystemKit };
  Domain domain;
  std::int32_t code;

  friend bool operator==(const VolumeError&, const VolumeError&) = default;
};

[[nodiscard]] constexpr VolumeError posixError(std::int32_t number) {
  return {.domain = VolumeError::Domain::posix, .code = number};
}

namespace darwin {
inline constexpr std::int32_t noEntry = 2;           // ENOENT
inline constexpr std::int32_t inputOutput = 5;       // EIO
inline constexpr std::int32_t notADirectory = 20;    // ENOTDIR
inline constexpr std::int32_t isADirectory = 21;     // EISDIR
inline constexpr std::int32_t invalidArgument = 22;  // EINVAL
inline constexpr std::int32_t readOnly = 30;         // EROFS
inline constexpr std::int32_t notConnected = 57;     // ENOTCONN
inline constexpr std::int32_t timedOut = 60;         // ETIMEDOUT
}  // namespace darwin

// The directory changed since the cookie was given out, or the cookie lies beyond its end.
inline constexpr VolumeError invalidDirectoryCookie = {.domain = VolumeError::Domain::fileSystemKit,
                                                       .code = 4506};

// What a reply carries beside its result; absent for success.
using OptionalError = std::optional<VolumeError>;

}  // namespace tarnel
