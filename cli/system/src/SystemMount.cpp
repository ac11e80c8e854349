#include "systemmount/SystemMount.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include "control/ErrnoName.h"
#include "control/SocketPaths.h"
#include "control/Thread.h"
#include "systemmount/SystemTool.h"

namespace tarnel::SystemMount {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds rest{50};

// Runs one of the system's programs; its own words when it fails.
std::expected<void, FailureLines> run(const std::vector<std::string>& arguments) {
  const std::string& program = arguments[0];
  const auto outcome = runTool(arguments);
  if (!outcome) {
    return std::unexpected(
        FailureLines{program + ": cannot be run (" + errnoName(outcome.error()) + ")"});
  }
  if (outcome->status == 0) return {};
  FailureLines lines = outcome->words;
  lines.push_back(program + " failed with status " + std::to_string(outcome->status));
  return std::unexpected(std::move(lines));
}

bool isOurs(const Request& request) {
  return request.typeOfMount(request.folder) == TarnelFSKitSocket::fileSystemType;
}

// What is wrong with the root, or nothing once it has answered.
std::optional<std::string> askRoot(const Request& request, Clock::time_point end) {
  while (!isOurs(request)) {
    if (Clock::now() >= end) return "nothing of ours is mounted there, though mount said so";
    std::this_thread::sleep_for(rest);
  }
  struct stat status{};
  if (::stat(request.folder.c_str(), &status) == 0) return std::nullopt;
  return "the root cannot be read (" + errnoName(errno) + ")";
}

// The question is asked on a thread of its own, which is left alone when no answer comes: a file
// system that is stuck holds whoever asks it.
std::expected<void, FailureLines> waitForRoot(const Request& request) {
  const auto end = Clock::now() + request.patience;
  const auto promise = std::make_shared<std::promise<std::optional<std::string>>>();
  auto answer = promise->get_future();
  startThread("tarnel.mount.root", [=] { promise->set_value(askRoot(request, end)); }).detach();
  const auto wrong = answer.wait_until(end + 2 * rest) == std::future_status::ready
                         ? answer.get()
                         : std::optional<std::string>("the root does not answer");
  if (!wrong) return {};
  return std::unexpected(
      FailureLines{request.folder + ": " + *wrong + "; `umount -f` takes the mount away"});
}

std::string whyNot(const std::string& option) {
  const std::string name = option.substr(0, option.find('='));
  if (name == "attr_timeout" || name == "entry_timeout") {
    return option + ": the system itself decides here how long it keeps what it was told";
  }
  return option + ": not an option here, where ro and nobrowse are";
}

}  // namespace

std::expected<std::vector<std::string>, std::string> optionsFor(const Wishes& wishes) {
  if (wishes.socket) {
    return std::unexpected(
        "--socket: the extension's socket cannot be chosen, it lies in the extension's container");
  }
  if (wishes.foreground) {
    return std::unexpected("-f: the system serves the mount, not this program");
  }
  if (wishes.debug) {
    return std::unexpected("--debug: what the extension logs is in the system's log");
  }
  std::vector<std::string> options;
  for (const std::string& text : wishes.options) {
    for (std::size_t from = 0; from <= text.size();) {
      const std::size_t comma = std::min(text.find(',', from), text.size());
      const std::string option = text.substr(from, comma - from);
      from = comma + 1;
      if (option.empty() || option == "ro") continue;
      if (option != "nobrowse") return std::unexpected(whyNot(option));
      options.push_back(option);
    }
  }
  return options;
}

std::expected<void, FailureLines> mount(const Request& request) {
  if (isOurs(request)) {
    return std::unexpected(FailureLines{request.folder + ": the volume is mounted there already"});
  }
  struct stat status{};
  if (::stat(request.folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return std::unexpected(FailureLines{request.folder + ": not a folder: make it first"});
  }
  std::vector<std::string> arguments = {request.program, "-F", "-t",
                                        std::string(TarnelFSKitSocket::fileSystemType)};
  for (const std::string& option : request.options) {
    arguments.emplace_back("-o");
    arguments.push_back(option);
  }
  arguments.emplace_back(resourceURL);
  arguments.push_back(request.folder);
  if (auto ran = run(arguments); !ran) {
    ran.error().push_back("is the extension switched on? " + std::string(whereToEnable));
    return ran;
  }
  return waitForRoot(request);
}

std::expected<void, FailureLines> unmount(const std::string& folder, const std::string& program,
                                          const TypeOfMount& typeOfMount) {
  if (typeOfMount(folder) != TarnelFSKitSocket::fileSystemType) {
    return std::unexpected(FailureLines{folder + ": no Tarnel volume is mounted there"});
  }
  return run({program, folder});
}

}  // namespace tarnel::SystemMount
