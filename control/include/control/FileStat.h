// The status of one file-system object, as the host describes it.
//
// Units: size in bytes (signed; a negative size is the consumer's to judge), mtimeMs in
// milliseconds since 1970-01-01 UTC. mode 0 and nlink 0 mean "not reported"; owner and group are
// names. Whoever makes one gives the first four fields, by convention: their initial values mean
// nothing. JSON: all nine keys are written, in field order. On reading the first four are required;
// the last five take their initial values when the key is absent or null, so that a consumer can
// never tell absence from 0, "" or false. Equality is field by field, texts by canonical
// equivalence.
#pragma once

#include <cstdint>
#include <expected>
#include <string>

#include "control/CodingError.h"

namespace tarnel {

class JsonReader;
class JsonWriter;

struct FileStat {
  std::string name;
  std::int64_t size = 0;
  std::int64_t mtimeMs = 0;
  bool isDirectory = false;
  std::uint32_t mode = 0;
  std::uint32_t nlink = 0;
  std::string owner = {};
  std::string group = {};
  bool isSymlink = false;

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<FileStat, DecodingError> decode(JsonReader& json);
  friend bool operator==(const FileStat& a, const FileStat& b);
};

}  // namespace tarnel
