#include "control/FileStat.h"

#include "RecordCoding.h"
#include "control/Text.h"

namespace tarnel {
namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, FileStat>
void fields(Record& stat, Visitor& visit) {
  visit.required("name", stat.name);
  visit.required("size", stat.size);
  visit.required("mtimeMs", stat.mtimeMs);
  visit.required("isDirectory", stat.isDirectory);
  visit.defaulted("mode", stat.mode);
  visit.defaulted("nlink", stat.nlink);
  visit.defaulted("owner", stat.owner);
  visit.defaulted("group", stat.group);
  visit.defaulted("isSymlink", stat.isSymlink);
}

}  // namespace record

void FileStat::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<FileStat, DecodingError> FileStat::decode(JsonReader& json) {
  return record::decode(json, FileStat());
}

bool operator==(const FileStat& a, const FileStat& b) {
  return textEqual(a.name, b.name) && a.size == b.size && a.mtimeMs == b.mtimeMs &&
         a.isDirectory == b.isDirectory && a.mode == b.mode && a.nlink == b.nlink &&
         textEqual(a.owner, b.owner) && textEqual(a.group, b.group) && a.isSymlink == b.isSymlink;
}

}  // namespace tarnel
