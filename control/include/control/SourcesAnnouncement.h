// What a host tells a peer: the shares that it offers now, in its own order. Travels in a versioned
// envelope of the family WireVersion::sources. Names are not judged and duplicates stay.
#pragma once

#include <expected>
#include <optional>
#include <vector>

#include "control/Bytes.h"
#include "control/CodingError.h"
#include "control/SourceShare.h"

namespace tarnel {

class JsonReader;
class JsonWriter;

struct SourcesAnnouncement {
  std::vector<SourceShare> shares;

  // The envelope; no bytes when a name is not UTF-8.
  [[nodiscard]] Bytes encoded() const;
  // From an envelope; nullopt for another version and for a malformed one alike.
  [[nodiscard]] static std::optional<SourcesAnnouncement> decode(BytesView data);

  // The record by itself.
  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<SourcesAnnouncement, DecodingError> decode(JsonReader& json);
  friend bool operator==(const SourcesAnnouncement&, const SourcesAnnouncement&) = default;
};

}  // namespace tarnel
