// What the JSON coders report. Values, never thrown: a malformed message is an ordinary event.
#pragma once

#include <string>

namespace tarnel {

// Why a text could not be read as a record.
struct DecodingError {
  enum class Kind {
    keyNotFound,    // a required key is missing
    valueNotFound,  // a required key holds null
    typeMismatch,   // a value has another JSON type than the field
    dataCorrupted,  // not JSON, nested too deeply, out of range, an unknown raw string, too large
  };
  Kind kind;
  std::string detail;  // the key or the position, for people

  friend bool operator==(const DecodingError&, const DecodingError&) = default;
};
[[nodiscard]] std::string description(const DecodingError& error);

// Why a record could not be written: a text that is not valid UTF-8.
struct EncodingError {
  std::string detail;

  friend bool operator==(const EncodingError&, const EncodingError&) = default;
};
[[nodiscard]] std::string description(const EncodingError& error);

}  // namespace tarnel
