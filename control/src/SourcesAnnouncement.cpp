#include "control/SourcesAnnouncement.h"

#include "RecordCoding.h"
#include "control/WireEnvelope.h"
#include "control/WireVersion.h"

namespace tarnel {
namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, SourcesAnnouncement>
void fields(Record& announcement, Visitor& visit) {
  visit.required("shares", announcement.shares);
}

}  // namespace record

Bytes SourcesAnnouncement::encoded() const {
  return WireEnvelope::encode(*this, WireVersion::sources);
}

std::optional<SourcesAnnouncement> SourcesAnnouncement::decode(BytesView data) {
  return WireEnvelope::decodeOrNil<SourcesAnnouncement>(WireVersion::sources, data);
}

void SourcesAnnouncement::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<SourcesAnnouncement, DecodingError> SourcesAnnouncement::decode(JsonReader& json) {
  return record::decode(json, SourcesAnnouncement());
}

}  // namespace tarnel
