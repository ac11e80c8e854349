// The versioned envelope: {"v":<version of the message family>,"p":<payload>}, compact JSON without
// a line feed, "v" first. A reader takes the keys in any order and ignores others.
//
// A payload is anything that JsonWriter::value writes and JsonReader::read reads: a record of this
// library, or any type with `encode(JsonWriter&)`, `static decode(JsonReader&)` and a default
// value.
// Only an equal version passes, and it is looked at before the payload: a message of another
// revision is known as one even when its payload could not be read.
// Threads: pure functions.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "control/Bytes.h"
#include "control/CodingError.h"
#include "control/JsonReader.h"
#include "control/JsonWriter.h"
#include "control/WireDecoded.h"

namespace tarnel::WireEnvelope {

namespace detail {

// Reads the value of a required key; of two equal keys the first counts.
template <class T>
void readOnce(JsonReader& json, std::string_view key, bool& met, T& out) {
  if (std::exchange(met, true)) {
    json.skipValue();
  } else if (json.takeNull()) {
    json.fail(DecodingError::Kind::valueNotFound, std::string(key));
  } else {
    json.read(out);
  }
}

inline void require(JsonReader& json, std::string_view key, bool met) {
  if (!met) json.fail(DecodingError::Kind::keyNotFound, std::string(key));
}

struct VersionHeader {
  std::int64_t v = 0;

  [[nodiscard]] static std::expected<VersionHeader, DecodingError> decode(JsonReader& json);
};

template <class Payload>
struct Envelope {
  std::int64_t v = 0;
  Payload p = {};

  [[nodiscard]] static std::expected<Envelope, DecodingError> decode(JsonReader& json) {
    Envelope envelope;
    bool hasVersion = false;
    bool hasPayload = false;
    std::string_view key;
    if (json.enterObject()) {
      while (json.nextKey(key)) {
        if (key == "v") {
          readOnce(json, "v", hasVersion, envelope.v);
        } else if (key == "p") {
          readOnce(json, "p", hasPayload, envelope.p);
        } else {
          json.skipValue();
        }
      }
      require(json, "v", hasVersion);
      require(json, "p", hasPayload);
    }
    if (json.failed()) return std::unexpected(json.error());
    return envelope;
  }
};

}  // namespace detail

// Fails for a payload with a text that is not UTF-8.
template <class Payload>
[[nodiscard]] std::expected<std::string, EncodingError> encodeJSON(const Payload& value,
                                                                   std::int64_t v) {
  JsonWriter json;
  json.beginObject();
  json.field("v", v);
  json.field("p", value);
  json.endObject();
  return json.finish();
}

// The same as bytes; no bytes, which is nothing to send, where encodeJSON fails.
template <class Payload>
[[nodiscard]] Bytes encode(const Payload& value, std::int64_t v) {
  return encodeJSON(value, v).value_or(Bytes());
}

template <class Payload>
[[nodiscard]] WireDecoded<Payload> decode(std::int64_t v, BytesView bytes) {
  const auto header = readJson<detail::VersionHeader>(bytes);
  if (!header) return Malformed{};
  if (header->v != v) return VersionMismatch{.theirs = header->v, .ours = v};
  auto envelope = readJson<detail::Envelope<Payload>>(bytes);
  if (!envelope) return Malformed{};
  return std::move(envelope->p);
}

template <class Payload>
[[nodiscard]] WireDecoded<Payload> decodeJSON(std::int64_t v, std::string_view text) {
  return decode<Payload>(v, text);
}

// The payload alone: for callers to whom another version and a damaged message are one.
template <class Payload>
[[nodiscard]] std::optional<Payload> decodeOrNil(std::int64_t v, BytesView bytes) {
  auto decoded = decode<Payload>(v, bytes);
  if (auto* payload = std::get_if<Payload>(&decoded)) return std::move(*payload);
  return std::nullopt;
}

}  // namespace tarnel::WireEnvelope
