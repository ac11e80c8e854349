// The records inside a response.
#include <utility>

#include "RecordCoding.h"
#include "TextFields.h"
#include "control/ControlResponse.h"
#include "control/FileStat.h"

namespace tarnel {
namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, ReviewSummary>
void fields(Record& review, Visitor& visit) {
  visit.required("sharedCount", review.sharedCount);
  visit.required("excludedCount", review.excludedCount);
  visit.required("secrets", review.secrets);
  visit.required("caps", review.caps);
  visit.required("isRemote", review.isRemote);
}

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, ControlStat>
void fields(Record& stat, Visitor& visit) {
  visit.required("name", stat.name);
  visit.required("size", stat.size);
  visit.required("mtimeMs", stat.mtimeMs);
  visit.required("isDirectory", stat.isDirectory);
  visit.required("mode", stat.mode);
  visit.required("nlink", stat.nlink);
  visit.required("owner", stat.owner);
  visit.required("group", stat.group);
}

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, ControlName>
void fields(Record& name, Visitor& visit) {
  visit.required("n", name.name);
  visit.required("d", name.isDirectory);
}

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, RemoteShareInfo>
void fields(Record& share, Visitor& visit) {
  visit.required("peer", share.peer);
  visit.required("name", share.name);
  visit.required("isRemote", share.isRemote);
}

}  // namespace record

void ReviewSummary::encode(JsonWriter& json) const { record::encode(*this, json); }
void ControlStat::encode(JsonWriter& json) const { record::encode(*this, json); }
void ControlName::encode(JsonWriter& json) const { record::encode(*this, json); }
void RemoteShareInfo::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<ReviewSummary, DecodingError> ReviewSummary::decode(JsonReader& json) {
  return record::decode(json, ReviewSummary());
}
std::expected<ControlStat, DecodingError> ControlStat::decode(JsonReader& json) {
  return record::decode(json, ControlStat());
}
std::expected<ControlName, DecodingError> ControlName::decode(JsonReader& json) {
  return record::decode(json, ControlName());
}
std::expected<RemoteShareInfo, DecodingError> RemoteShareInfo::decode(JsonReader& json) {
  return record::decode(json, RemoteShareInfo());
}

ControlStat::ControlStat(FileStat stat)
    : name(std::move(stat.name)),
      size(stat.size),
      mtimeMs(stat.mtimeMs),
      isDirectory(stat.isDirectory),
      mode(stat.mode),
      nlink(stat.nlink),
      owner(std::move(stat.owner)),
      group(std::move(stat.group)) {}

ControlName::ControlName(const FileStat& stat) : ControlName(stat.name, stat.isDirectory) {}

bool operator==(const ReviewSummary& a, const ReviewSummary& b) {
  return a.sharedCount == b.sharedCount && a.excludedCount == b.excludedCount &&
         sameText(a.secrets, b.secrets) && sameText(a.caps, b.caps) && a.isRemote == b.isRemote;
}

bool operator==(const ControlStat& a, const ControlStat& b) {
  return textEqual(a.name, b.name) && a.size == b.size && a.mtimeMs == b.mtimeMs &&
         a.isDirectory == b.isDirectory && a.mode == b.mode && a.nlink == b.nlink &&
         textEqual(a.owner, b.owner) && textEqual(a.group, b.group);
}

bool operator==(const ControlName& a, const ControlName& b) {
  return textEqual(a.name, b.name) && a.isDirectory == b.isDirectory;
}

bool operator==(const RemoteShareInfo& a, const RemoteShareInfo& b) {
  return textEqual(a.peer, b.peer) && textEqual(a.name, b.name) && a.isRemote == b.isRemote;
}

}  // namespace tarnel
