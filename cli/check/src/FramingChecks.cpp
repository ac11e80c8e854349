// 1xx: connections, lines, and one answer for one request.
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string>

#include "CheckGroups.h"
#include "HostProbe.h"
#include "control/ControlWire.h"

namespace tarnel {
namespace {

CheckVerdict aRequestIsAnswered(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  if (auto sent = talk->send(textOf(sharesRequest()) + "\n"); !sent) return sent.error();
  const auto first = talk->wire.nextByte(host.answerDeadline());
  if (first) return passed();
  if (first.error() == WireFault::closed) {
    return failedCheck("the host hung up on the first request: answer it and keep the connection");
  }
  return failedCheck("the first request was not answered in time: answer each line as it comes");
}

CheckVerdict anAnswerEndsWithALineFeed(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  const auto line = talk->askLine(textOf(sharesRequest()));
  return line ? passed() : line.error();
}

CheckVerdict anAnswerReadsAsAResponse(HostProbe& host) {
  const auto answer = host.ask(sharesRequest());
  return answer ? passed() : answer.error();
}

CheckVerdict nothingComesBeforeTheFirstRequest(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  const BytesView early = talk->wire.bytesUntil(host.in(host.limits().quiet));
  if (early.empty()) return passed();
  return failedCheck("the host spoke first, " + quoted(early) + ": only answer, never greet");
}

CheckVerdict oneRequestGetsOneAnswer(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  const auto answer = talk->ask(sharesRequest());
  if (!answer) return answer.error();
  const BytesView rest = talk->wire.bytesUntil(host.in(host.limits().quiet));
  if (rest.empty()) return passed();
  return failedCheck("after the answer more came, " + quoted(rest) +
                     ": send one line for one request, and nothing else");
}

// Which of the two requests that these checks alternate an answer belongs to.
bool isOf(const ControlResponse& response, bool isStat) {
  if (isStat) return response.stat.has_value();
  return !response.stat && (response.shares || response.remoteShares);
}

CheckVerdict requestsFollowOneAnother(HostProbe& host) {
  constexpr int rounds = 8;
  if (host.material().shares.empty()) return skipped("share a folder");
  auto talk = host.talk();
  if (!talk) return talk.error();
  for (int round = 0; round < rounds; ++round) {
    const bool isStat = round % 2 == 1;
    const auto answer =
        talk->ask(isStat ? statRequest(host.material().shares.front()) : sharesRequest());
    if (!answer) return answer.error();
    if (!isOf(answer->response, isStat)) {
      return failedCheck("request " + std::to_string(round + 1) +
                         " of a connection got another one's answer: answer in order");
    }
  }
  return passed();
}

CheckVerdict requestsThatComeTogetherAreAnsweredInOrder(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string second = textOf(statRequest(host.material().shares.front()));
  auto talk = host.talk();
  if (!talk) return talk.error();
  if (auto sent = talk->send(textOf(sharesRequest()) + "\n" + second + "\n"); !sent) {
    return sent.error();
  }
  for (const bool isStat : {false, true}) {
    const auto line = talk->line(second);
    if (!line) return line.error();
    const auto response = ControlWire::decode<ControlResponse>(*line);
    if (!response || !isOf(*response, isStat)) {
      return failedCheck(
          "two lines in one read were not answered in their order: keep what stands "
          "behind a line feed for the next request");
    }
  }
  return passed();
}

CheckVerdict aRequestInPiecesIsAnswered(HostProbe& host) {
  constexpr std::chrono::milliseconds pause{20};
  const std::string request = textOf(sharesRequest()) + "\n";
  auto talk = host.talk();
  if (!talk) return talk.error();
  for (std::size_t sent = 0; sent < request.size(); sent += 5) {
    if (auto piece = talk->send(BytesView(request).substr(sent, 5)); !piece) return piece.error();
    if (sent + 5 >= request.size()) break;
    if (!talk->wire.bytesUntil(host.in(pause)).empty()) {
      return failedCheck("half a request was answered: wait for the line feed");
    }
  }
  const auto line = talk->line(request);
  return line ? passed() : line.error();
}

CheckVerdict aLongRequestIsAnswered(HostProbe& host) {
  ControlRequest request = sharesRequest();
  request.label = std::string(256 * 1'024, 'x');
  const auto answer = host.ask(request);
  if (!answer) return answer.error();
  if (isOf(answer->response, false)) return passed();
  return failedCheck("a request of 256 KiB was refused: take lines of up to 16 MiB");
}

CheckVerdict aLineWithoutAnEndIsBounded(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  const Bytes piece(256 * 1'024, ' ');
  bool isTaken = true;
  for (std::size_t sent = 0; isTaken && sent <= ControlWire::maxFrameBytes; sent += piece.size()) {
    isTaken = talk->wire.send(piece, host.answerDeadline());
  }
  if (!talk->wire.hangsUpBy(host.answerDeadline())) {
    return failedCheck("after more than 16 MiB without a line feed the connection stood: hang up");
  }
  const auto answer = host.ask(sharesRequest());
  return answer ? passed() : answer.error();
}

CheckVerdict twoConnectionsAreServedAtOnce(HostProbe& host) {
  auto first = host.talk();
  if (!first) return first.error();
  if (const auto answer = first->ask(sharesRequest()); !answer) return answer.error();
  auto second = host.talk();
  if (!second) return second.error();
  for (Talk* const talk : {&*second, &*first}) {
    if (talk->ask(sharesRequest())) continue;
    return failedCheck(
        "while one connection was open another was not answered: serve many at once "
        "(the volume holds two)");
  }
  return passed();
}

CheckVerdict halfARequestAndAHangUpHarmNobody(HostProbe& host) {
  {
    auto talk = host.talk();
    if (!talk) return talk.error();
    if (auto sent = talk->send(R"({"op":"sha)"); !sent) return sent.error();
  }
  const auto answer = host.ask(sharesRequest());
  return answer ? passed() : answer.error();
}

CheckVerdict aClientThatDoesNotReadHoldsUpNobody(HostProbe& host) {
  constexpr int requests = 8;  // 2.8 MB of answers: more than sockets hold
  const auto& large = host.material().largeFile;
  if (!large) return skipped("share a file of more than 256 KiB");
  auto lazy = host.talk();
  if (!lazy) return lazy.error();
  const std::string line = textOf(readRequest(large->location, 0, Material::windowBytes)) + "\n";
  for (int i = 0; i < requests; ++i) {
    if (auto sent = lazy->send(line); !sent) return sent.error();
  }
  if (host.ask(sharesRequest())) return passed();
  return failedCheck(
      "while a client did not read its answers another was not answered: let no "
      "connection wait for another's");
}

CheckVerdict theSocketIsItsOwnersAlone(HostProbe& host) {
  struct stat status{};
  if (::stat(host.path().c_str(), &status) != 0) return skipped("the socket's file has no status");
  if ((status.st_mode & 0077) == 0) return passed();
  return failedCheck("others may open the socket's file: set its mode to 0600");
}

constexpr std::array checks = {
    HostCheck{101, "a connection's first request is answered", aRequestIsAnswered},
    HostCheck{102, "an answer ends with a line feed", anAnswerEndsWithALineFeed},
    HostCheck{103, "an answer reads as a response", anAnswerReadsAsAResponse},
    HostCheck{104, "nothing comes before the first request", nothingComesBeforeTheFirstRequest},
    HostCheck{105, "one request gets one answer", oneRequestGetsOneAnswer},
    HostCheck{106, "a connection answers one request after another", requestsFollowOneAnother},
    HostCheck{107, "requests that come together are answered in order",
              requestsThatComeTogetherAreAnsweredInOrder},
    HostCheck{108, "a request that comes in pieces is answered", aRequestInPiecesIsAnswered},
    HostCheck{109, "a request of 256 KiB is answered", aLongRequestIsAnswered},
    HostCheck{110, "a line that never ends is hung up on", aLineWithoutAnEndIsBounded},
    HostCheck{111, "two connections are served at once", twoConnectionsAreServedAtOnce},
    HostCheck{112, "half a request and a hang-up harm nobody", halfARequestAndAHangUpHarmNobody},
    HostCheck{113, "a client that does not read holds up nobody",
              aClientThatDoesNotReadHoldsUpNobody},
    HostCheck{114, "the socket's file is its owner's alone", theSocketIsItsOwnersAlone}};

}  // namespace

std::span<const HostCheck> framingChecks() { return checks; }

}  // namespace tarnel
