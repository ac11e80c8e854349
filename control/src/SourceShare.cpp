#include "control/SourceShare.h"

#include "RecordCoding.h"
#include "control/Text.h"

namespace tarnel {
namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, SourceShare>
void fields(Record& share, Visitor& visit) {
  visit.required("name", share.name);
  visit.required("isRemote", share.isRemote);
}

}  // namespace record

void SourceShare::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<SourceShare, DecodingError> SourceShare::decode(JsonReader& json) {
  return record::decode(json, SourceShare());
}

bool operator==(const SourceShare& a, const SourceShare& b) {
  return textEqual(a.name, b.name) && a.isRemote == b.isRemote;
}

}  // namespace tarnel
