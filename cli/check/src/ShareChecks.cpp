// 3xx: what is shared, and that nothing else is.
#include <array>
#include <string>

#include "CheckGroups.h"
#include "HostProbe.h"
#include "Refusals.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

CheckVerdict sharesAreListed(HostProbe& host) {
  const auto answer = host.ask(sharesRequest());
  if (!answer) return answer.error();
  if (answer->response.status != ControlResponse::Status::ok) {
    return failedCheck("`shares` was refused with " + quoted(answer->line) +
                       ": answer an empty list where nothing is shared");
  }
  return passed();  // both lists may be absent
}

CheckVerdict shareNamesAreSafe(HostProbe& host) {
  const auto answer = host.ask(sharesRequest());
  if (!answer) return answer.error();
  const char* const advice =
      " is no name for a folder and is never shown: no empty name, \".\", "
      "\"..\", \"/\" or NUL";
  for (const auto& share : answer->response.shares.value_or(std::vector<SourceShare>())) {
    if (!isSafeFabricName(share.name))
      return failedCheck("the share " + quoted(share.name) + advice);
  }
  for (const auto& share : answer->response.remoteShares.value_or(std::vector<RemoteShareInfo>())) {
    if (!isSafeFabricName(share.name))
      return failedCheck("the share " + quoted(share.name) + advice);
    if (!isSafeFabricName(share.peer))
      return failedCheck("the peer " + quoted(share.peer) + advice);
  }
  return passed();
}

CheckVerdict everyShareIsAFolder(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  for (const std::string& share : host.material().shares) {
    const auto answer = host.ask(statRequest(share));
    if (!answer) return answer.error();
    if (!answer->response.stat) {
      return failedCheck("the share " + quoted(share) +
                         " has no status: answer `stat` of "
                         "\"peer/Share\", where the host's own peer is \"me\"");
    }
    if (!answer->response.stat->isDirectory) {
      return failedCheck("the share " + quoted(share) + " is said to be no folder: share folders");
    }
  }
  return passed();
}

CheckVerdict whatIsNotSharedIsMissing(HostProbe& host) {
  for (const char* const location : {"me/no such share", "no such peer/Docs"}) {
    auto verdict = isRefusedAs(host, statRequest(location), {Kind::notFound});
    if (verdict.outcome != CheckOutcome::pass) return verdict;
  }
  return passed();
}

CheckVerdict placesAboveSharesAreAnswered(HostProbe& host) {
  auto talk = host.talk();
  if (!talk) return talk.error();
  for (const char* const location : {"", "/", "me", "me/", "//"}) {
    if (const auto answer = talk->ask(statRequest(location)); !answer) return answer.error();
  }
  const auto unnamed = talk->askText(R"({"op":"stat"})");
  return unnamed ? passed() : unnamed.error();
}

CheckVerdict nothingAboveAShareIsServed(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string& share = host.material().shares.front();
  for (const char* const way :
       {"/..", "/../..", "/./..", "/../../../../../../../../../../../etc"}) {
    for (const auto& request : {statRequest(share + way), listRequest(share + way)}) {
      const auto answer = host.ask(request);
      if (!answer) return answer.error();
      if (!hasPayload(request, answer->response)) continue;
      return failedCheck(quoted(share + way) +
                         " leads out of the share and was served: refuse "
                         "every location with a component \"..\"");
    }
  }
  return passed();
}

CheckVerdict systemPathsAreNotServed(HostProbe& host) {
  for (const char* const location : {"/etc/passwd", "/etc/hosts"}) {
    const auto read = host.ask(readRequest(location, 0, 1));
    if (!read) return read.error();
    if (read->response.dataBase64.value_or("").empty()) continue;
    return failedCheck("the system's own " + quoted(location) +
                       " was read: a location begins with "
                       "a peer and a share, never with the file system's root");
  }
  return passed();
}

CheckVerdict aNulInALocationIsRefused(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string& share = host.material().shares.front();
  return isRefusedAs(host, statRequest(share + std::string("\0/x", 3)), {Kind::notFound});
}

constexpr std::array checks = {
    HostCheck{301, "shares are listed", sharesAreListed},
    HostCheck{302, "shares and peers have safe names", shareNamesAreSafe},
    HostCheck{303, "every share is a folder with a status", everyShareIsAFolder},
    HostCheck{304, "what is not shared is missing", whatIsNotSharedIsMissing},
    HostCheck{305, "places above the shares are answered", placesAboveSharesAreAnswered},
    HostCheck{306, "nothing above a share is served", nothingAboveAShareIsServed},
    HostCheck{307, "the system's own paths are not served", systemPathsAreNotServed},
    HostCheck{308, "a NUL in a location is refused", aNulInALocationIsRefused}};

}  // namespace

std::span<const HostCheck> shareChecks() { return checks; }

}  // namespace tarnel
