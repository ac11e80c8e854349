// Writes compact JSON, keys in the order of the calls, in the platform coder's spelling: '"', '\'
// and '/' are escaped with a backslash, the control characters with a short form as \b \f \n \r \t,
// the other characters below 0x20 as \u00xx in lower case, everything else as it is.
//
// A text that is not valid UTF-8 cannot be written; the writer remembers that and `finish` fails.
// The output never holds a raw line feed. Threads: one writer, one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "control/CodingError.h"

namespace tarnel {

class JsonWriter {
 public:
  void beginObject();
  void endObject();
  void beginArray();
  void endArray();
  void key(std::string_view name);

  void value(std::string_view text);
  void value(const std::string& text) { value(std::string_view(text)); }
  void value(const char* text) { value(std::string_view(text)); }
  void value(bool flag);
  void value(std::int64_t number);
  void value(std::uint32_t number) { value(static_cast<std::int64_t>(number)); }
  template <class Enum>
    requires std::is_enum_v<Enum>
  void value(Enum content) {
    value(rawValue(content));
  }
  // Any record with `void encode(JsonWriter&) const`.
  template <class Record>
    requires requires(const Record& record, JsonWriter& json) { record.encode(json); }
  void value(const Record& record) {
    record.encode(*this);
  }
  template <class T>
  void value(const std::vector<T>& list) {
    beginArray();
    for (const auto& element : list) value(element);
    endArray();
  }
  // The text of a base64 encoding of `bytes`, as a string: what value(base64::encode(bytes)) would
  // write, in one pass.
  void base64Value(std::string_view bytes);

  template <class T>
  void field(std::string_view name, const T& content) {
    key(name);
    value(content);
  }
  // An absent optional leaves its key out.
  template <class T>
  void field(std::string_view name, const std::optional<T>& content) {
    if (content) field(name, *content);
  }

  [[nodiscard]] std::size_t size() const { return out.size(); }
  void reserve(std::size_t bytes) { out.reserve(bytes); }
  // Takes the text out of the writer.
  [[nodiscard]] std::expected<std::string, EncodingError> finish();

 private:
  void separate();

  std::string out;
  bool needsComma = false;
  std::optional<EncodingError> failure;
};

}  // namespace tarnel
