// One binary frame of a streamed reply. Wire: tag u8 | length u32 big endian | payload.
//
// Bounds: length counts payload bytes only; a reader refuses more than maxBodyBytes, as soon as the
// head is there. encode does not apply that bound: writers keep to it themselves.
// Tags are compared as exact bytes: "X" and "x" are two different failures. An unknown tag is not
// an error at this level. Threads: pure functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>

#include "control/Bytes.h"
#include "control/ReceiveBuffer.h"

namespace tarnel {

struct ControlStreamError {
  enum class Kind { oversized };
  Kind kind = Kind::oversized;
  std::int64_t length = 0;  // the payload length that a head announced

  friend bool operator==(const ControlStreamError&, const ControlStreamError&) = default;
};
[[nodiscard]] std::string description(const ControlStreamError& error);

struct StreamFrame {
  std::uint8_t tag = 0;
  Bytes payload;

  friend bool operator==(const StreamFrame&, const StreamFrame&) = default;
};

namespace ControlStreamFrame {

inline constexpr std::uint8_t data = 0x44;       // "D": a chunk of file bytes
inline constexpr std::uint8_t eof = 0x45;        // "E": the end of the stream; empty
inline constexpr std::uint8_t error = 0x58;      // "X": the whole stream failed; a message
inline constexpr std::uint8_t header = 0x48;     // "H": a tree entry's header, JSON
inline constexpr std::uint8_t fileError = 0x78;  // "x": one file of a tree failed; a message
inline constexpr std::int64_t window = 262'144;
inline constexpr std::int64_t maxBodyBytes = 8'388'608;

// What stands before the payload, for those who make or read frames in a buffer of their own.
struct Head {
  std::uint8_t tag = 0;
  std::uint32_t length = 0;  // of the payload; no bound is applied
};
inline constexpr std::size_t headBytes = 5;
// `bytes` begin with a whole head; `to` has room for one.
[[nodiscard]] Head readHead(BytesView bytes);
void writeHead(const Head& head, char* to);

// True for the first character of a line of JSON, with which a host answers that does not serve the
// stream at all: no tag is one.
[[nodiscard]] bool beginsLine(char first);

// A complete frame. A payload past 4294967295 bytes is a programming error and ends the process.
[[nodiscard]] Bytes encode(std::uint8_t tag, BytesView payload);

// The first complete frame, cut off the front of the buffer; nullopt while it is incomplete. In
// every other outcome than a frame the buffer is unchanged, so after `oversized` the connection is
// unusable.
[[nodiscard]] std::expected<std::optional<StreamFrame>, ControlStreamError> parse(
    ReceiveBuffer& buffer);

}  // namespace ControlStreamFrame
}  // namespace tarnel
