// One share that the host offers. Both keys are required on reading and always written. There are
// no initial values, so that a warning tells of a field that was left out.
#pragma once

#include <expected>
#include <string>

#include "control/CodingError.h"

namespace tarnel {

class JsonReader;
class JsonWriter;

struct SourceShare {
  std::string name;  // as the volume shows it; checked on the volume's side
  bool isRemote;     // belongs to a remote peer rather than to the host itself

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<SourceShare, DecodingError> decode(JsonReader& json);
  friend bool operator==(const SourceShare& a, const SourceShare& b);
};

}  // namespace tarnel
