#include "control/ControlResponse.h"

#include <array>
#include <utility>

#include "RawEnum.h"
#include "RecordCoding.h"
#include "TextFields.h"

namespace tarnel {
namespace {

constexpr std::array<std::string_view, 3> statuses = {"ok", "review", "error"};

}  // namespace

std::string_view rawValue(ControlResponse::Status status) {
  return statuses[static_cast<std::size_t>(status)];
}

template <>
std::optional<ControlResponse::Status> fromRawValue(std::string_view rawValue) {
  return enumOf<ControlResponse::Status>(statuses, rawValue);
}

namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, ControlResponse>
void fields(Record& response, Visitor& visit) {
  visit.required("status", response.status);
  visit.optional("message", response.message);
  visit.optional("review", response.review);
  visit.optional("shares", response.shares);
  visit.optional("remoteShares", response.remoteShares);
  visit.optional("stat", response.stat);
  visit.optional("entries", response.entries);
  visit.optional("names", response.names);
  visit.optional("dataBase64", response.dataBase64);
}

}  // namespace record

ControlResponse ControlResponse::error(std::string message) {
  ControlResponse response;
  response.status = Status::error;
  response.message = std::move(message);
  return response;
}

void ControlResponse::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<ControlResponse, DecodingError> ControlResponse::decode(JsonReader& json) {
  return record::decode(json, ControlResponse());
}

bool operator==(const ControlResponse& a, const ControlResponse& b) {
  return a.status == b.status && sameText(a.message, b.message) && a.review == b.review &&
         a.shares == b.shares && a.remoteShares == b.remoteShares && a.stat == b.stat &&
         a.entries == b.entries && a.names == b.names && sameText(a.dataBase64, b.dataBase64);
}

}  // namespace tarnel
