// What reading a versioned envelope gives: the payload, or which of two things is wrong. A reader
// can tell a message of another revision from a damaged one.
#pragma once

#include <cstdint>
#include <variant>

namespace tarnel {

// Well formed as far as the version, which is another than the reader's; older and newer alike.
struct VersionMismatch {
  std::int64_t theirs;  // in the message
  std::int64_t ours;    // that the reader asked for

  friend bool operator==(const VersionMismatch&, const VersionMismatch&) = default;
};

// Not JSON, no integer "v", or a payload that does not decode.
struct Malformed {
  friend bool operator==(const Malformed&, const Malformed&) = default;
};

template <class Payload>
using WireDecoded = std::variant<Payload, VersionMismatch, Malformed>;

}  // namespace tarnel
