// check-host.
#include <string>

#include "Commands.h"
#include "Console.h"
#include "HostAbsence.h"
#include "check/HostCheck.h"
#include "control/JsonWriter.h"

namespace tarnel {
namespace {

std::string_view word(CheckOutcome outcome) {
  switch (outcome) {
    case CheckOutcome::pass:
      return "PASS";
    case CheckOutcome::fail:
      return "FAIL";
    case CheckOutcome::skip:
      return "SKIP";
  }
  __builtin_unreachable();
}

std::string textLine(const HostCheck& check, const CheckVerdict& verdict) {
  std::string line = std::string(word(verdict.outcome)) + " " + std::to_string(check.number) + " " +
                     std::string(check.title);
  if (!verdict.note.empty()) line += ": " + verdict.note;
  return line + "\n";
}

std::string jsonLine(const HostCheck& check, const CheckVerdict& verdict) {
  JsonWriter json;
  json.beginObject();
  json.field("number", static_cast<std::int64_t>(check.number));
  json.field("title", check.title);
  json.field("outcome", verdict.outcome);
  json.field("note", verdict.note);
  json.endObject();
  return json.finish().value_or("") + "\n";
}

std::string summary(const CheckCounts& counts) {
  return std::to_string(counts.passed) + " passed, " + std::to_string(counts.failed) + " failed, " +
         std::to_string(counts.skipped) + " skipped\n";
}

}  // namespace

int runCheckHost(const CheckArguments& arguments) {
  if (const auto reason = whyNoHost(arguments.socket)) return fail(*reason);
  const auto report = [&](const HostCheck& check, const CheckVerdict& verdict) {
    return print(arguments.json ? jsonLine(check, verdict) : textLine(check, verdict));
  };
  const CheckCounts counts = runHostChecks(arguments.socket, CheckLimits(), {}, report);
  if (!arguments.json && !outputClosed()) print(summary(counts));
  const int status = statusAfterPrinting();
  return counts.failed == 0 ? status : failed;
}

}  // namespace tarnel
