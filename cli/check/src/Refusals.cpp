#include "Refusals.h"

#include <algorithm>

#include "fs/ControlFabricSource.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

// What the user of a volume is told.
std::string_view meaning(Kind kind) {
  switch (kind) {
    case Kind::io:
      return "an input/output error";
    case Kind::notFound:
      return "missing";
    case Kind::notADirectory:
      return "not a directory";
    case Kind::isDirectory:
      return "a directory";
    case Kind::timedOut:
      return "late";
    case Kind::disconnected:
      return "disconnected";
  }
  __builtin_unreachable();
}

// The words that a message of this kind needs.
std::string_view words(Kind kind) {
  switch (kind) {
    case Kind::notADirectory:
      return "say \"not a directory\"";
    case Kind::isDirectory:
      return "say \"is a directory\"";
    default:
      return "say \"no such file\", without the location";
  }
}

Checked<Answer> refusal(const HostProbe& host, const ControlRequest& request) {
  auto answer = host.ask(request);
  if (!answer) return answer;
  const std::string asked = quoted(textOf(request));
  if (hasPayload(request, answer->response)) {
    return failing(asked + " has to be refused and was answered with " + quoted(answer->line));
  }
  if (answer->response.status != ControlResponse::Status::error) {
    return failing(asked + " was answered with nothing and no refusal: answer with status error");
  }
  return answer;
}

}  // namespace

bool hasPayload(const ControlRequest& request, const ControlResponse& response) {
  switch (request.op) {
    case ControlOp::stat:
      return response.stat.has_value();
    case ControlOp::list:
      return response.entries.has_value() || response.names.has_value();
    case ControlOp::read:
      return response.dataBase64.has_value();
    case ControlOp::shares:
      return response.shares.has_value() || response.remoteShares.has_value();
    default:
      return false;
  }
}

CheckVerdict isRefusedAs(const HostProbe& host, const ControlRequest& request,
                         std::initializer_list<Kind> kinds) {
  const auto answer = refusal(host, request);
  if (!answer) return answer.error();
  const auto& message = answer->response.message;
  const Kind kind = ControlFabricSource::classify(message).kind;
  if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) return passed();
  return failedCheck("the refusal " + quoted(message.value_or("")) + " of " +
                     quoted(textOf(request)) + " is understood as " + std::string(meaning(kind)) +
                     ": " + std::string(words(*kinds.begin())));
}

CheckVerdict isRefused(const HostProbe& host, const ControlRequest& request) {
  const auto answer = refusal(host, request);
  return answer ? passed() : answer.error();
}

}  // namespace tarnel
