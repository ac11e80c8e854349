#include "AnswerLine.h"

#include <string>
#include <utility>

namespace tarnel {

Bytes answerLine(const ControlResponse& response) {
  JsonWriter json;
  json.value(response);
  return answerLine(json);
}

Bytes answerLine(Refusal refusal) {
  return answerLine(ControlResponse::error(std::string(description(refusal))));
}

Bytes answerLine(JsonWriter& json) {
  auto text = json.finish();
  // Every text was checked when it came in, so this is never reached; a reader that waits for a
  // line gets one all the same.
  if (!text) return answerLine(Refusal::ioError);
  text->push_back('\n');
  return std::move(*text);
}

}  // namespace tarnel
