// A record's JSON, and back, for tests of records.
#pragma once

#include <gtest/gtest.h>

#include <expected>
#include <string>
#include <string_view>

#include "control/CodingError.h"
#include "control/JsonReader.h"
#include "control/JsonWriter.h"

namespace tarnel::test {

template <class Record>
std::string jsonOf(const Record& record) {
  JsonWriter json;
  json.value(record);
  return json.finish().value_or("cannot be encoded");
}

// What went wrong; nullopt when the text is a record.
template <class Record>
std::optional<DecodingError::Kind> failureOf(std::string_view text) {
  const auto record = readJson<Record>(text);
  if (record) return std::nullopt;
  return record.error().kind;
}

template <class Record>
Record decoded(std::string_view text) {
  auto record = readJson<Record>(text);
  if (record) return std::move(*record);
  ADD_FAILURE() << text << ": " << description(record.error());
  return Record{};
}

}  // namespace tarnel::test
