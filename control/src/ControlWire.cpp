#include "control/ControlWire.h"

namespace tarnel::ControlWire {

std::expected<std::string, EncodingError> finishFrame(JsonWriter& json) {
  auto text = json.finish();
  if (text) text->push_back('\n');
  return text;
}

}  // namespace tarnel::ControlWire
