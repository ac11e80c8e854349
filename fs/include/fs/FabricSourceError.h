// Why a source could not answer, and the two rules on it: the error number that leaves the volume
// and whether the last known attributes may stand in.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "control/CodingError.h"
#include "seam/VolumeError.h"

namespace tarnel {

struct FabricSourceError {
  enum class Kind {
    io,             // any other failure; its message is for the log alone
    notFound,       // no such path at the host, and every refusal of unknown kind
    notADirectory,  // a directory operation on something else
    isDirectory,    // a file operation on a directory
    timedOut,       // no answer within the time limit
    disconnected,   // no connection to the host
  };
  Kind kind;
  std::string message = {};  // io only

  friend bool operator==(const FabricSourceError& a, const FabricSourceError& b);
};

// A source's own error, or one of another layer passed through unchanged.
using FabricFailure = std::variant<FabricSourceError, EncodingError, DecodingError>;

[[nodiscard]] std::string description(const FabricFailure& failure);

// The POSIX number (Darwin's): ENOENT, ENOTDIR, EISDIR, ETIMEDOUT, ENOTCONN, and EIO for `io` and
// for every error of another layer.
[[nodiscard]] std::int32_t fabricErrno(const FabricFailure& failure);

// True for notFound and disconnected alone. A time-out does not allow it: the host is there and may
// be about to say something else.
[[nodiscard]] bool mayServeLastKnownAttributes(const FabricFailure& failure);

// What the volume replies with.
[[nodiscard]] VolumeError volumeError(const FabricFailure& failure);

}  // namespace tarnel
