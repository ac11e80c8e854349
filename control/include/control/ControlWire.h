// The framing of control messages, in both directions: one compact JSON text, then one line feed
// (0x0A). There is no length and no version; the encoder escapes line feeds inside texts, so the
// first 0x0A ends the message. Threads: pure functions.
#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

#include "control/CodingError.h"
#include "control/JsonReader.h"
#include "control/JsonWriter.h"

namespace tarnel::ControlWire {

// The most bytes that a reader holds unconsumed while it waits for the end of a message.
inline constexpr std::size_t maxFrameBytes = 16'777'216;

// The written text as a frame.
[[nodiscard]] std::expected<std::string, EncodingError> finishFrame(JsonWriter& json);

// A record's frame: its JSON and the line feed.
// Defined for ControlRequest, ControlResponse and every record with an `encode(JsonWriter&)`.
template <class Record>
[[nodiscard]] std::expected<std::string, EncodingError> encode(const Record& record) {
  JsonWriter json;
  json.value(record);
  return finishFrame(json);
}

// A record from the bytes of a line, without its line feed.
template <class Record>
[[nodiscard]] std::expected<Record, DecodingError> decode(std::string_view line) {
  return readJson<Record>(line);
}

}  // namespace tarnel::ControlWire
