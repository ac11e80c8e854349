#include "control/ControlRequest.h"

#include <array>

#include "RawEnum.h"
#include "RecordCoding.h"
#include "TextFields.h"

namespace tarnel {
namespace {

constexpr std::array<std::string_view, 11> ops = {
    "share", "confirm", "cancel",     "unshare",        "shares", "stat",
    "list",  "read",    "readStream", "readTreeStream", "bridge"};
constexpr std::array<std::string_view, 3> policies = {"interactive", "yes", "force"};

}  // namespace

std::string_view rawValue(ControlOp op) { return ops[static_cast<std::size_t>(op)]; }

template <>
std::optional<ControlOp> fromRawValue(std::string_view rawValue) {
  return enumOf<ControlOp>(ops, rawValue);
}

std::string_view rawValue(SharePolicy policy) { return policies[static_cast<std::size_t>(policy)]; }

template <>
std::optional<SharePolicy> fromRawValue(std::string_view rawValue) {
  return enumOf<SharePolicy>(policies, rawValue);
}

namespace record {

template <class Record, class Visitor>
  requires std::is_same_v<std::remove_const_t<Record>, ControlRequest>
void fields(Record& request, Visitor& visit) {
  visit.required("op", request.op);
  visit.optional("name", request.name);
  visit.optional("folder", request.folder);
  visit.optional("policy", request.policy);
  visit.optional("includeSecrets", request.includeSecrets);
  visit.optional("ackCaps", request.ackCaps);
  visit.optional("all", request.all);
  visit.optional("label", request.label);
  visit.optional("address", request.address);
  visit.optional("offset", request.offset);
  visit.optional("length", request.length);
  visit.optional("namesOnly", request.namesOnly);
  visit.optional("limit", request.limit);
}

}  // namespace record

void ControlRequest::encode(JsonWriter& json) const { record::encode(*this, json); }

std::expected<ControlRequest, DecodingError> ControlRequest::decode(JsonReader& json) {
  return record::decode(json, ControlRequest{.op = ControlOp::share});
}

bool operator==(const ControlRequest& a, const ControlRequest& b) {
  return a.op == b.op && sameText(a.name, b.name) && sameText(a.folder, b.folder) &&
         a.policy == b.policy && sameText(a.includeSecrets, b.includeSecrets) &&
         a.ackCaps == b.ackCaps && a.all == b.all && sameText(a.label, b.label) &&
         sameText(a.address, b.address) && a.offset == b.offset && a.length == b.length &&
         a.namesOnly == b.namesOnly && a.limit == b.limit;
}

}  // namespace tarnel
