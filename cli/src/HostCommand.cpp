#include <signal.h>

#include <filesystem>
#include <system_error>

#include "Commands.h"
#include "Console.h"
#include "EndSignals.h"
#include "ExtensionHome.h"
#include "OwnMounts.h"
#include "host/ExtensionSocket.h"
#include "host/ReferenceHost.h"
#include "host/SharePath.h"

namespace tarnel {
namespace {

// "/home/a/Pictures/" is shared as "Pictures", "." as the folder's real name.
std::string nameOfFolder(const std::string& folder) {
  std::error_code error;
  const auto real = std::filesystem::canonical(folder, error);
  return error ? std::filesystem::path(folder).filename().string() : real.filename().string();
}

int wrongUsage(const std::string& message) {
  fail(message + " (see `tarnel host --help`)");
  return usage;
}

void waitFor(const sigset_t& ends) {
  int taken = 0;
  while (::sigwait(&ends, &taken) != 0) {
  }
}

}  // namespace

int runHost(const HostArguments& arguments) {
  HostOptions options;
  options.socketPath = arguments.socket;
  options.isOwnMount = ownMountTest();
  for (const std::string& text : arguments.shares) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals + 1 == text.size()) {
      return wrongUsage("--share wants NAME=DIR, not " + text);
    }
    options.shares.push_back({.peer = std::string(localPeer),
                              .name = text.substr(0, equals),
                              .folder = text.substr(equals + 1)});
  }
  for (const std::string& text : arguments.peers) {
    const std::size_t equals = text.find('=');
    const std::size_t slash = text.find('/');
    if (equals == std::string::npos || equals + 1 == text.size() || slash > equals) {
      return wrongUsage("--peer wants PEER/NAME=DIR, not " + text);
    }
    options.shares.push_back({.peer = text.substr(0, slash),
                              .name = text.substr(slash + 1, equals - slash - 1),
                              .folder = text.substr(equals + 1)});
  }
  for (const std::string& folder : arguments.folders) {
    options.shares.push_back(
        {.peer = std::string(localPeer), .name = nameOfFolder(folder), .folder = folder});
  }
  if (options.shares.empty()) return wrongUsage("nothing to share: name a folder");
  options.log = [](std::string_view line) { fail(line); };

  const sigset_t ends = blockEndSignals();
  const std::size_t count = options.shares.size();
  const auto host = ReferenceHost::start(std::move(options));
  if (!host) return fail(description(host.error()));
  std::string places = shown(arguments.socket);
  const auto home = arguments.socketIsGiven ? std::nullopt : extensionHome();
  if (home) {
    const auto listening = listenForExtension(**host, *home);
    if (listening) {
      places += " and " + shown(*listening);
    } else if (fail(description(listening.error())); isTaken(listening.error())) {
      return failed;
    }
  }
  print("tarnel host: sharing " + std::to_string(count) + (count == 1 ? " folder" : " folders") +
        " on " + places + "\n");
  (void)statusAfterPrinting();  // told; what is shared is shared all the same
  waitFor(ends);
  (*host)->stop();
  return done;
}

}  // namespace tarnel
