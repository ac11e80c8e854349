#include "control/WireEnvelope.h"

namespace tarnel::WireEnvelope::detail {

std::expected<VersionHeader, DecodingError> VersionHeader::decode(JsonReader& json) {
  VersionHeader header;
  bool hasVersion = false;
  std::string_view key;
  if (json.enterObject()) {
    while (json.nextKey(key)) {
      if (key == "v") {
        readOnce(json, "v", hasVersion, header.v);
      } else {
        json.skipValue();
      }
    }
    require(json, "v", hasVersion);
  }
  if (json.failed()) return std::unexpected(json.error());
  return header;
}

}  // namespace tarnel::WireEnvelope::detail
