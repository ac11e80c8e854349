// `tarnel mount` and `tarnel unmount` on macOS, where the system serves the mount.
#include <cerrno>
#include <cstdlib>
#include <expected>
#include <memory>
#include <string>
#include <string_view>

#include "Commands.h"
#include "Console.h"
#include "DarwinMounts.h"
#include "control/ErrnoName.h"
#include "systemmount/SystemMount.h"

namespace tarnel {
namespace {

int refuse(const std::string& reason) {
  fail(reason + " (see `tarnel mount --help`)");
  return usage;
}

int tell(const std::expected<void, FailureLines>& outcome) {
  if (outcome) return done;
  for (const std::string& line : outcome.error()) fail(line);
  return failed;
}

// As the kernel names it in its table. An errno when it cannot be found.
std::expected<std::string, int> resolved(const std::string& given) {
  const std::unique_ptr<char, decltype(&std::free)> path(::realpath(given.c_str(), nullptr),
                                                         &std::free);
  if (!path) return std::unexpected(errno);
  return path.get();
}

}  // namespace

constinit const std::string_view mountOptionNames = SystemMount::optionNames;

int runMount(const MountArguments& arguments) {
  auto options = SystemMount::optionsFor({.socket = arguments.socketIsGiven,
                                          .foreground = arguments.foreground,
                                          .debug = arguments.debug,
                                          .options = arguments.options});
  if (!options) return refuse(options.error());
  const auto folder = resolved(arguments.mountpoint);
  if (!folder) {
    return fail(arguments.mountpoint + ": cannot be used (" + errnoName(folder.error()) + ")");
  }
  return tell(SystemMount::mount(
      {.folder = *folder, .options = std::move(*options), .typeOfMount = typeOfMount}));
}

int runUnmount(const UnmountArguments& arguments) {
  if (arguments.lazy) return refuse("--lazy: not here; `umount -f` unmounts what is in use");
  const auto folder = resolved(arguments.mountpoint);
  if (!folder) {
    return fail(arguments.mountpoint + ": cannot be used (" + errnoName(folder.error()) + ")");
  }
  return tell(SystemMount::unmount(*folder, "/sbin/umount", typeOfMount));
}

}  // namespace tarnel
