#include "control/TreeHeader.h"

#include <array>

#include "RawEnum.h"
#include "RecordCoding.h"
#include "TextFields.h"

namespace tarnel {
namespace {

constexpr std::array<std::string_view, 2> kinds = {"dir", "file"};

}  // namespace

std::string_view rawValue(TreeHeader::Kind kind) { return kinds[static_cast<std::size_t>(kind)]; }

template <>
std::optional<TreeHeader::Kind> fromRawValue(std::string_view rawValue) {
  return enumOf<TreeHeader::Kind>(kinds, rawValue);
}

namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, TreeHeader>
void fields(Record& header, Visitor& visit) {
  visit.required("relpath", header.relpath);
  visit.required("kind", header.kind);
  visit.required("mode", header.mode);
  visit.required("size", header.size);
  visit.optional("error", header.error);
}

}  // namespace record

bool TreeHeader::isNoise(std::string_view name) {
  return name == ".DS_Store" || name.starts_with("._");
}

void TreeHeader::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<TreeHeader, DecodingError> TreeHeader::decode(JsonReader& json) {
  return record::decode(json, TreeHeader{.relpath = {}, .kind = Kind::dir});
}

bool operator==(const TreeHeader& a, const TreeHeader& b) {
  return sameText(a.relpath, b.relpath) && a.kind == b.kind && a.mode == b.mode &&
         a.size == b.size && sameText(a.error, b.error);
}

}  // namespace tarnel
