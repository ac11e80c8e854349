// The two templates of ControlWire.h. Included by it only.
#pragma once

#include "control/JsonReader.h"
#include "control/JsonWriter.h"

namespace tarnel::ControlWire {

template <class Record>
std::expected<std::string, EncodingError> encode(const Record& record) {
  JsonWriter json;
  json.value(record);
  return detail::finishFrame(json);
}

template <class Record>
std::expected<Record, DecodingError> decode(std::string_view line) {
  return readJson<Record>(line);
}

}  // namespace tarnel::ControlWire
