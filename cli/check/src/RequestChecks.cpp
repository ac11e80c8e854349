// 2xx: how requests may be spelled, what is no request, and how answers must be spelled.
#include <array>
#include <string>
#include <vector>

#include "CheckGroups.h"
#include "HostProbe.h"
#include "LineSpelling.h"
#include "control/JsonWriter.h"

namespace tarnel {
namespace {

// A `stat` of the first share in the given spelling has to find it.
CheckVerdict statSpelled(HostProbe& host, const std::string& before, const std::string& location,
                         const std::string& after, const char* advice) {
  const std::string request = before + location + after;
  const auto answer = host.askText(request);
  if (!answer) return answer.error();
  if (answer->response.stat) return passed();
  return failedCheck(std::string(advice) + "; refused: " + quoted(request));
}

std::string firstShare(HostProbe& host) {
  return host.material().shares.empty() ? std::string() : host.material().shares.front();
}

// The text as a JSON string.
std::string asJson(const std::string& text) {
  JsonWriter json;
  json.value(text);
  return json.finish().value_or("\"\"");
}

// The same with every slash as it is.
std::string plainSlashes(const std::string& text) {
  std::string spelled = asJson(text);
  for (std::size_t at = 0; (at = spelled.find("\\/", at)) != std::string::npos;) {
    spelled.erase(at, 1);
  }
  return spelled;
}

// The same with the first letter as \uXXXX.
std::string firstLetterEscaped(const std::string& text) {
  const auto letter = static_cast<unsigned char>(text.front());
  constexpr std::string_view hex = "0123456789abcdef";
  std::string spelled = asJson(text);
  if (letter >= 0x80 || spelled.at(1) == '\\') return spelled;
  const std::string escape = {'\\', 'u', '0', '0', hex[letter >> 4], hex[letter & 15]};
  return spelled.replace(1, 1, escape);
}

CheckVerdict plainSlashIsRead(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  return statSpelled(host, R"({"op":"stat","name":)", plainSlashes(firstShare(host)), "}",
                     "read a slash without a backslash as well");
}

CheckVerdict escapedLettersAreRead(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  return statSpelled(host, R"({"op":"\u0073tat","name":)", firstLetterEscaped(firstShare(host)),
                     "}", "read \\uXXXX in requests");
}

CheckVerdict anyOrderAndSpacesAreRead(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  return statSpelled(host, " { \"name\" :\t", asJson(firstShare(host)), " , \"op\" : \"stat\" } ",
                     "read keys in any order, with white space between");
}

CheckVerdict unknownKeysAreIgnored(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  return statSpelled(host, R"({"colour":{"a":[1,null,{"op":"list"}]},"op":"stat","name":)",
                     asJson(firstShare(host)), R"(,"later":false})",
                     "ignore keys that you do not know");
}

CheckVerdict nullIsAbsent(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  return statSpelled(host, R"({"op":"stat","offset":null,"limit":null,"policy":null,"name":)",
                     asJson(firstShare(host)), "}", "read a null as an absent key");
}

// A line that no host can serve has to be answered with an error.
CheckVerdict refusesLine(HostProbe& host, std::string_view request) {
  const auto answer = host.askText(request);
  if (!answer) return answer.error();
  if (answer->response.status == ControlResponse::Status::error) return passed();
  return failedCheck(quoted(request) + " was answered with " + quoted(answer->line) +
                     ": answer with status error");
}

CheckVerdict refusesLines(HostProbe& host, std::initializer_list<std::string_view> requests) {
  for (const std::string_view request : requests) {
    if (auto verdict = refusesLine(host, request); verdict.outcome != CheckOutcome::pass) {
      return verdict;
    }
  }
  return passed();
}

CheckVerdict anUnknownOperationIsRefused(HostProbe& host) {
  return refusesLine(host, R"({"op":"frobnicate"})");
}

CheckVerdict operationsAreExactTexts(HostProbe& host) {
  return refusesLines(host, {R"({"op":"Shares"})", R"({"op":"shares "})"});
}

CheckVerdict aRequestWithoutAnOperationIsRefused(HostProbe& host) {
  return refusesLines(host, {R"({"name":"me\/Docs"})", R"({"op":null})", R"({"op":7})"});
}

CheckVerdict aValueOfTheWrongTypeIsRefused(HostProbe& host) {
  return refusesLines(host, {R"({"op":"stat","name":7})", R"({"op":"shares","offset":"0"})",
                             R"({"op":"shares","limit":9223372036854775808})"});
}

CheckVerdict whatIsNotJsonIsRefused(HostProbe& host) {
  return refusesLines(host, {"nonsense", "", "{", R"({"op":"shares"}})", "[]", "\xff\xfe"});
}

CheckVerdict theConnectionSurvivesARefusal(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  for (const char* const refused :
       {R"({"op":"stat","name":"me\/no such share\/at all"})", R"({"op":"frobnicate"})"}) {
    if (const auto answer = talk->askText(refused); !answer) return answer.error();
    if (const auto next = talk->ask(sharesRequest()); !next) {
      return failedCheck(std::string("after the refusal of ") + quoted(refused) +
                         " the next request was not answered: keep the connection");
    }
  }
  return passed();
}

CheckVerdict refusalsSayWhy(HostProbe& host) {
  for (const char* const refused :
       {R"({"op":"stat","name":"me\/no such share\/at all"})", R"({"op":"frobnicate"})"}) {
    const auto answer = host.askText(refused);
    if (!answer) return answer.error();
    if (answer->response.message.value_or("").empty()) {
      return failedCheck("the refusal of " + quoted(refused) +
                         " says nothing: put the reason into `message`");
    }
  }
  return passed();
}

CheckVerdict deepNestingHarmsNobody(HostProbe& host) {
  constexpr std::size_t depth = 100'000;
  auto talk = host.talk();
  if (!talk) return talk.error();
  const std::string request =
      R"({"op":"shares","deep":)" + std::string(depth, '[') + std::string(depth, ']') + "}\n";
  if (talk->wire.send(request, host.answerDeadline())) {
    const auto line = talk->wire.line(host.answerDeadline());
    if (!line && line.error() != WireFault::closed) {
      return failedCheck("a request nested 100,000 deep was not answered: refuse it");
    }
  }
  const auto answer = host.ask(sharesRequest());
  return answer ? passed() : answer.error();
}

// Lines of several kinds, as they come.
Checked<std::vector<Bytes>> someLines(HostProbe& host) {
  constexpr std::size_t mostShares = 4;
  std::vector<ControlRequest> requests = {sharesRequest(), statRequest("me/no such share/at all")};
  for (const std::string& share : host.material().shares) {
    if (requests.size() >= 2 + 2 * mostShares) break;
    requests.push_back(statRequest(share));
    requests.push_back(listRequest(share));
  }
  if (host.material().subfolder) requests.push_back(listRequest(*host.material().subfolder));
  std::vector<Bytes> lines;
  for (const ControlRequest& request : requests) {
    auto talk = host.talk();
    if (!talk) return std::unexpected(talk.error());
    auto line = talk->askLine(textOf(request));
    if (line) lines.push_back(std::move(*line));  // other checks tell of an answer that is none
  }
  return lines;
}

CheckVerdict linesAre(HostProbe& host, bool (*isWrong)(BytesView line), const char* advice) {
  const auto lines = someLines(host);
  if (!lines) return lines.error();
  for (const Bytes& line : *lines) {
    if (isWrong(line)) return failedCheck(std::string(advice) + "; seen: " + quoted(line));
  }
  return passed();
}

CheckVerdict controlCharactersAreEscaped(HostProbe& host) {
  return linesAre(host, hasRawControlCharacter,
                  "escape every character below U+0020 inside a text, as in \\u0009");
}

CheckVerdict answersAreUtf8(HostProbe& host) {
  return linesAre(host, isNotUtf8, "write UTF-8 alone; leave out names that are not");
}

CheckVerdict absentKeysAreLeftOut(HostProbe& host) {
  return linesAre(host, hasNullKey, "leave out a key that has no value, never write null");
}

CheckVerdict theFirstOfTwoKeysCounts(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  return statSpelled(host, R"({"op":"stat","name":)", asJson(firstShare(host)),
                     R"(,"name":"me\/no such share"})", "of two equal keys take the first");
}

CheckVerdict numbersAreReadByValue(HostProbe& host) {
  if (firstShare(host).empty()) return skipped("share a folder");
  for (const char* const ten : {"10.0", "1e1", "1.0E+1"}) {
    auto verdict = statSpelled(host, R"({"op":"stat","offset":)" + std::string(ten) + R"(,"name":)",
                               asJson(firstShare(host)), "}", "read numbers by value");
    if (verdict.outcome != CheckOutcome::pass) return verdict;
  }
  return passed();
}

constexpr std::array checks = {
    HostCheck{201, "a plain slash in a location is read", plainSlashIsRead},
    HostCheck{202, "an escaped letter in a request is read", escapedLettersAreRead},
    HostCheck{203, "keys come in any order, with white space", anyOrderAndSpacesAreRead},
    HostCheck{204, "unknown keys are ignored", unknownKeysAreIgnored},
    HostCheck{205, "a null is an absent key", nullIsAbsent},
    HostCheck{206, "an unknown operation is refused with an answer", anUnknownOperationIsRefused},
    HostCheck{207, "operations are compared as exact texts", operationsAreExactTexts},
    HostCheck{208, "a request without an operation is refused",
              aRequestWithoutAnOperationIsRefused},
    HostCheck{209, "a value of the wrong type is refused", aValueOfTheWrongTypeIsRefused},
    HostCheck{210, "a line that is no JSON is refused", whatIsNotJsonIsRefused},
    HostCheck{211, "a connection survives a refusal", theConnectionSurvivesARefusal},
    HostCheck{212, "a refusal says why", refusalsSayWhy},
    HostCheck{213, "a request nested very deep harms nobody", deepNestingHarmsNobody},
    HostCheck{214, "control characters in answers are escaped", controlCharactersAreEscaped},
    HostCheck{215, "answers are UTF-8", answersAreUtf8},
    HostCheck{216, "an absent key is left out, not null", absentKeysAreLeftOut},
    HostCheck{217, "of two equal keys the first counts", theFirstOfTwoKeysCounts},
    HostCheck{218, "numbers are read by value", numbersAreReadByValue}};

}  // namespace

std::span<const HostCheck> requestChecks() { return checks; }

}  // namespace tarnel
