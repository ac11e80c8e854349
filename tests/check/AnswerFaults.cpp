#include <string_view>

#include "Faults.h"

namespace tarnel::test {
namespace {

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// The answer with one text in the place of another.
Fault spelled(std::string from, std::string to) {
  return [from, to](const Exchange& exchange) {
    if (exchange.isStream()) return rightReply(exchange);
    return HostReply().answer(replaced(exchange.answer, from, to));
  };
}

bool isRefusal(const Exchange& exchange) {
  return !exchange.isStream() && exchange.response().status == ControlResponse::Status::error;
}

HostReply refuse(const std::string& message) { return replyOf(ControlResponse::error(message)); }

// Requests with this in their text are refused.
Fault refusing(std::string text) {
  return [text](const Exchange& exchange) {
    const bool isRefused = exchange.line.find(text) != std::string::npos;
    return isRefused ? refuse("malformed request") : rightReply(exchange);
  };
}

bool hasPlainSlash(const std::string& line) {
  for (std::size_t at = 0; (at = line.find('/', at)) != std::string::npos; ++at) {
    if (at == 0 || line[at - 1] != '\\') return true;
  }
  return false;
}

}  // namespace

std::vector<FaultCase> answerFaults() {
  std::vector<FaultCase> faults;
  faults.push_back({"an answer that is no JSON", 103, {}, [](const Exchange&) {
                      return HostReply().answer("OK");
                    }});
  faults.push_back({"every request answered twice",
                    105,
                    {106, 107, 702, 704, 705, 808, 830},
                    [](const Exchange& e) {
                      if (e.isStream()) return rightReply(e);
                      return HostReply().send(e.answer + "\n" + e.answer + "\n");
                    }});
  faults.push_back({"slashes read behind a backslash alone", 201, {}, [](const Exchange& e) {
                      return hasPlainSlash(e.line) ? refuse("no such file") : rightReply(e);
                    }});
  faults.push_back({"no \\uXXXX in requests", 202, {}, [](const Exchange& e) {
                      const bool isSpelledSo = e.line.find("\\u00") != std::string::npos &&
                                               e.line.find("\\u0000") == std::string::npos;
                      return isSpelledSo ? refuse("no such file") : rightReply(e);
                    }});
  faults.push_back({"`op` wanted first", 203, {204}, [](const Exchange& e) {
                      const bool isFirst = !e.request || e.line.starts_with(R"({"op":)");
                      return isFirst ? rightReply(e) : refuse("malformed request");
                    }});
  faults.push_back({"unknown keys refused", 204, {}, refusing("\"colour\"")});
  faults.push_back(
      {"null refused where a key may be absent", 205, {}, refusing(R"("offset":null)")});
  faults.push_back({"unknown operations answered as done", 206, {}, [](const Exchange& e) {
                      const bool isUnknown = e.line.find("frobnicate") != std::string::npos;
                      return isUnknown ? HostReply().answer(R"({"status":"ok","message":"done"})")
                                       : rightReply(e);
                    }});
  faults.push_back({"a hang-up on what is no JSON", 210, {}, [](const Exchange& e) {
                      if (e.request || e.line.starts_with("{\"")) return rightReply(e);
                      return HostReply().hangUp();
                    }});
  faults.push_back({"a hang-up after each refusal", 211, {305}, [](const Exchange& e) {
                      return isRefusal(e) ? rightReply(e).hangUp() : rightReply(e);
                    }});
  faults.push_back({"refusals without a message", 212, {508, 612}, [](const Exchange& e) {
                      if (!isRefusal(e)) return rightReply(e);
                      return HostReply().answer(R"({"status":"error"})");
                    }});
  faults.push_back({"control characters not escaped", 214, {501, 506}, spelled("\\t", "\t")});
  faults.push_back({"names that are not UTF-8", 215, {501, 506}, spelled("big", "b\xffg")});
  faults.push_back(
      {"null for absent keys", 216, {}, spelled("{\"status\"", "{\"review\":null,\"status\"")});
  faults.push_back({"the last of two equal keys taken", 217, {}, refusing("no such share\"}")});
  faults.push_back({"numbers read by their spelling", 218, {}, refusing("1e1")});
  return faults;
}

std::vector<FaultCase> silentFaults() {
  std::vector<FaultCase> faults;
  faults.push_back({"no answer at all", 101, {}, [](const Exchange&) { return HostReply(); }});
  faults.push_back({"answers without a line feed", 102, {}, [](const Exchange& e) {
                      return HostReply().send(e.answer);
                    }});
  faults.push_back({"unknown operations not answered", 206, {}, [](const Exchange& e) {
                      const bool isUnknown = e.line.find("frobnicate") != std::string::npos;
                      return isUnknown ? HostReply() : rightReply(e);
                    }});
  faults.push_back({"lines that are no JSON not answered", 210, {}, [](const Exchange& e) {
                      return e.request ? rightReply(e) : HostReply();
                    }});
  faults.push_back({"a stream without its end", 802, {}, [](const Exchange& e) {
                      if (!e.is(ControlOp::readStream)) return rightReply(e);
                      auto frames = e.frames;
                      frames.pop_back();
                      return replyOf(frames);
                    }});
  return faults;
}

}  // namespace tarnel::test
