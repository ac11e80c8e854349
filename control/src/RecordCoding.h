// How the records of the protocol are written and read: each lists its fields once, in JSON order,
// in a function template
//
//   template <class Record, class Visitor> void fields(Record& record, Visitor& visit) {
//     visit.required("name", record.name);
//     visit.defaulted("mode", record.mode);
//     visit.optional("message", record.message);
//   }
//
// required: always written; absent or null fails. defaulted: always written; absent or null keeps
// the initial value. optional: a std::optional, left out when absent.
#pragma once

#include <cassert>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "control/JsonReader.h"
#include "control/JsonWriter.h"

namespace tarnel::record {

class FieldWriter {
 public:
  explicit FieldWriter(JsonWriter& writer) : json(writer) {}

  template <class T>
  void required(std::string_view key, const T& content) {
    json.field(key, content);
  }
  template <class T>
  void defaulted(std::string_view key, const T& content) {
    json.field(key, content);
  }
  template <class T>
  void optional(std::string_view key, const std::optional<T>& content) {
    json.field(key, content);
  }

 private:
  JsonWriter& json;
};

// Which of a record's fields (by position, at most 32) were met.
class FieldSet {
 public:
  bool insert(unsigned position) {
    assert(position < 32);
    const bool isNew = !contains(position);
    bits |= 1u << position;
    return isNew;
  }
  [[nodiscard]] bool contains(unsigned position) const { return (bits >> position & 1u) != 0; }

 private:
  std::uint32_t bits = 0;
};

// Reads the value of one key into the field of that name. Of two equal keys the first counts.
class FieldReader {
 public:
  FieldReader(JsonReader& reader, std::string_view keyText, FieldSet& met)
      : json(reader), key(keyText), seen(met) {}

  template <class T>
  void required(std::string_view name, T& content) {
    if (!isMine(name)) return;
    if (json.takeNull()) {
      json.fail(DecodingError::Kind::valueNotFound, std::string(name));
    } else {
      json.read(content);
    }
  }
  template <class T>
  void defaulted(std::string_view name, T& content) {
    if (isMine(name) && !json.takeNull()) json.read(content);
  }
  template <class T>
  void optional(std::string_view name, std::optional<T>& content) {
    if (!isMine(name) || json.takeNull()) return;
    T value{};
    json.read(value);
    content = std::move(value);
  }
  void finish() {
    if (!taken) json.skipValue();
  }

 private:
  bool isMine(std::string_view name) {
    const unsigned here = position++;
    if (taken || name != key || !seen.insert(here)) return false;
    return taken = true;
  }

  JsonReader& json;
  const std::string_view key;
  FieldSet& seen;
  unsigned position = 0;
  bool taken = false;
};

// Reports the first required field that was not met.
class FieldCheck {
 public:
  FieldCheck(JsonReader& reader, const FieldSet& met) : json(reader), seen(met) {}

  template <class T>
  void required(std::string_view name, T&) {
    if (!seen.contains(position++)) {
      json.fail(DecodingError::Kind::keyNotFound, std::string(name));
    }
  }
  template <class T>
  void defaulted(std::string_view, T&) {
    ++position;
  }
  template <class T>
  void optional(std::string_view, std::optional<T>&) {
    ++position;
  }

 private:
  JsonReader& json;
  const FieldSet& seen;
  unsigned position = 0;
};

template <class Record>
void encode(const Record& record, JsonWriter& json) {
  json.beginObject();
  FieldWriter writer(json);
  fields(record, writer);
  json.endObject();
}

// `record` gives the initial values.
template <class Record>
std::expected<Record, DecodingError> decode(JsonReader& json, Record record) {
  FieldSet seen;
  std::string_view key;
  if (json.enterObject()) {
    while (json.nextKey(key)) {
      FieldReader reader(json, key, seen);
      fields(record, reader);
      reader.finish();
    }
    FieldCheck check(json, seen);
    fields(record, check);
  }
  if (json.failed()) return std::unexpected(json.error());
  return record;
}

}  // namespace tarnel::record
