// A strict pull reader of one JSON text (RFC 8259), for texts from a hostile peer.
//
// Numbers are read by value, not by spelling: 1.0, 1e2 and -0 are integers when the field takes one
// and the value fits, exact over all 64 bits. Strings that are read, and every key, must be UTF-8
// without half surrogate pairs; what no field reads must be JSON, no more. At most maxDepth levels
// of objects and arrays, the outermost counted.
//
// The first failure sticks: every later call does nothing and returns false, so a record reads all
// its fields and looks at failed() once.
// Lifetime: refers to the text. A key is valid until the next call. Threads: one reader, one
// thread.
#pragma once

#include <cstdint>
#include <expected>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "control/CodingError.h"
#include "control/RawValue.h"

namespace tarnel {

class JsonReader {
 public:
  static constexpr int maxDepth = 512;

  explicit JsonReader(std::string_view text) : at(text.data()), end(at + text.size()), begin(at) {}

  [[nodiscard]] bool failed() const { return failure.has_value(); }
  [[nodiscard]] const DecodingError& error() const { return *failure; }
  void fail(DecodingError::Kind kind, std::string detail);

  // while (json.nextKey(key)) reads every value; the same for elements.
  bool enterObject();
  bool nextKey(std::string_view& key);
  bool enterArray();
  bool nextElement();
  bool takeNull();  // consumes a null; false, with nothing consumed, for anything else
  void skipValue();
  void finish();  // fails unless only white space is left

  void read(std::string& out);
  void read(bool& out);
  void read(std::int64_t& out);
  void read(std::uint32_t& out);
  template <class T>
  void read(std::vector<T>& out) {
    if (!enterArray()) return;
    while (nextElement()) read(out.emplace_back());
  }
  template <class Enum>
    requires std::is_enum_v<Enum>
  void read(Enum& out) {
    std::string text;
    read(text);
    if (failed()) return;
    if (const auto value = fromRawValue<Enum>(text)) {
      out = *value;
    } else {
      fail(DecodingError::Kind::dataCorrupted, "unknown value");
    }
  }
  // Any record with `static std::expected<Record, DecodingError> decode(JsonReader&)`.
  template <class Record>
    requires requires(JsonReader& json) { Record::decode(json); }
  void read(Record& out) {
    if (auto record = Record::decode(*this)) out = std::move(*record);
  }

 private:
  struct RawString {
    std::string_view text;  // between the quotes, escapes as they came
    bool hasEscape = false;
    bool isAscii = true;
  };

  [[nodiscard]] char peek();  // the next character that is not white space; 0 at the end
  bool take(char expected);
  bool enter(char open);
  bool next(char close);  // steps over the comma; false at the end of the object or array
  bool literal(std::string_view word);
  [[nodiscard]] std::optional<RawString> rawString();
  bool text(std::string& out);
  void skipString();
  [[nodiscard]] std::optional<std::string_view> number();
  [[nodiscard]] std::optional<std::int64_t> integer();
  void corrupted(const char* what);

  const char* at;
  const char* end;
  const char* begin;
  int depth = 0;
  bool fresh = false;   // just after the opening bracket
  std::string scratch;  // a key with escapes
  std::optional<DecodingError> failure;
};

// What is wrong with a text whose reading failed so: that it is no JSON counts before what it says.
[[nodiscard]] DecodingError firstFault(std::string_view text, const DecodingError& failure);

// The whole text as one record. One that has no room in memory fails like one that cannot be read:
// a list of empty texts takes a dozen times its JSON, and its sender must not be able to end the
// process.
template <class Record>
[[nodiscard]] std::expected<Record, DecodingError> readJson(std::string_view text) {
  JsonReader json(text);
  try {
    auto record = Record::decode(json);
    json.finish();
    if (!json.failed()) return record;
  } catch (const std::bad_alloc&) {
    return std::unexpected(DecodingError{.kind = DecodingError::Kind::dataCorrupted,
                                         .detail = "no memory for what it holds"});
  }
  return std::unexpected(firstFault(text, json.error()));
}

}  // namespace tarnel
