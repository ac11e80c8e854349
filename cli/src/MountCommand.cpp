#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "CommandResource.h"
#include "Commands.h"
#include "Console.h"
#include "Daemon.h"
#include "EndSignals.h"
#include "HostAbsence.h"
#include "control/ErrnoName.h"
#include "control/UniqueFd.h"
#include "control/UnixSocket.h"
#include "fs/TarnelFileSystem.h"
#include "fusefs/AdapterLog.h"
#include "fusefs/FuseSession.h"
#include "fusefs/MountTable.h"
#include "fusefs/Unmount.h"

namespace tarnel {
namespace {

using Checked = std::expected<std::string, std::string>;

std::string withErrno(const std::string& path, const std::string& what, int error) {
  return path + ": " + what + " (" + errnoName(error) + ")";
}

// The folder as an absolute path without links, or an errno. What is mounted on it is not asked, so
// this holds for a dead or silent mount too; a "/" behind it would ask.
std::expected<std::string, int> resolved(std::string given) {
  while (given.ends_with("/") || given.ends_with("/.")) {
    const std::size_t kept = given.find_last_of('/');
    if (kept == 0) break;
    given.resize(kept);
  }
  const std::unique_ptr<char, decltype(&std::free)> path(::realpath(given.c_str(), nullptr),
                                                         &std::free);
  if (!path) return std::unexpected(errno);
  return path.get();
}

// The folder's resolved path, or what is wrong with it.
Checked checkMountpoint(const std::string& given) {
  const auto real = resolved(given);
  if (!real) {
    const bool isMissing = real.error() == ENOENT;
    return std::unexpected(withErrno(
        given, isMissing ? "no such folder: make it first" : "cannot be used", real.error()));
  }
  const std::string& path = *real;
  if (cleanUpDeadMount(path)) fail(given + ": cleaned up a mount whose process has gone");
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) {
    return std::unexpected(withErrno(given, "not a folder: choose an empty one", ENOTDIR));
  }
  if (const auto mount = mountAt(path)) {
    return std::unexpected(given + ": already a mountpoint (" + mount->type +
                           "): unmount it first, or choose another folder");
  }
  const bool isEmpty = std::filesystem::is_empty(path, error);
  if (error) return std::unexpected(withErrno(given, "cannot be read", error.value()));
  if (!isEmpty)
    return std::unexpected(withErrno(given, "not empty: choose another folder", ENOTEMPTY));
  return path;
}

std::expected<void, std::string> checkFuse() {
  const UniqueFd device(::open("/dev/fuse", O_RDWR | O_CLOEXEC));
  if (device.valid()) return {};
  if (errno == ENOENT || errno == ENODEV || errno == ENXIO) {
    return std::unexpected(withErrno("/dev/fuse",
                                     "this system has no FUSE; `modprobe fuse` may help,"
                                     " `tarnel ls` and `tarnel cat` work without",
                                     errno));
  }
  return std::unexpected(withErrno("/dev/fuse", "cannot be opened; ask an administrator", errno));
}

void warnWithoutHost(const std::string& socket) {
  if (const auto why = whyNoHost(socket)) fail(*why + "; the volume fills when one answers");
}

// Takes this mount away, and no other that came to stand on the same folder.
void unmountThis(const std::string& path, const std::optional<MountEntry>& own) {
  const auto top = mountAt(path);
  if (own && top && top->device == own->device) (void)unmountOwn(path, UnmountMode::lazy);
}

// Asks the root for its status, from a process that does not serve it: one that waited for itself
// when it is killed would never end.
int checkAnswers(const std::string& path) {
  struct stat status{};
  if (::stat(path.c_str(), &status) == 0) return done;
  const int error = errno;
  (void)unmountOwn(path, UnmountMode::lazy);
  return fail(withErrno(path, "the mount does not answer", error));
}

// Waits for the mount's end, or for a signal that ends it.
class EndWaiter {
 public:
  EndWaiter() {
    const sigset_t ends = blockEndSignals();
    signals.reset(::signalfd(-1, &ends, SFD_CLOEXEC));
    unmounted.reset(::eventfd(0, EFD_CLOEXEC));
  }

  void notifyUnmounted() const {
    const std::uint64_t one = 1;
    (void)!::write(unmounted.get(), &one, sizeof one);
  }

  enum class End { unmounted, signal, time };
  [[nodiscard]] End wait(int milliseconds) const {
    pollfd watched[2] = {{.fd = unmounted.get(), .events = POLLIN, .revents = 0},
                         {.fd = signals.get(), .events = POLLIN, .revents = 0}};
    while (true) {
      const int ready = ::poll(watched, 2, milliseconds);
      if (ready < 0 && errno == EINTR) continue;
      if (ready <= 0) return End::time;
      return watched[0].revents != 0 ? End::unmounted : End::signal;
    }
  }

 private:
  UniqueFd signals;
  UniqueFd unmounted;
};

// The buffers of a read are of a few hundred KiB and come by the thousand. By default the allocator
// gives each back to the system when it is freed, and every page of the next one costs a fault,
// which doubled the time of a large read. Listings are larger and still go back at once.
void keepReadBuffers() {
#if defined(__GLIBC__)
  ::mallopt(M_MMAP_THRESHOLD, 4 << 20);
  ::mallopt(M_TRIM_THRESHOLD, 8 << 20);
  ::mallopt(M_ARENA_MAX, 2);
#endif
}

// Plays the part that the system plays elsewhere: probe, load, mount, activate, serve, and the way
// back. `ready` is told once the mount serves, and says whether anybody still wants it. This process
// never touches what it serves.
int serveMount(const MountArguments& arguments, const std::string& path,
               const MountOptions& options, const std::function<bool()>& ready,
               const std::function<int(const std::string&)>& report) {
  constexpr int patience = 500;  // milliseconds for the threads to see the end of a detached mount
  keepReadBuffers();
  static EndWaiter waiter;  // the session's threads may outlive this call
  TarnelFileSystem fileSystem(arguments.socket);
  const CommandResource resource;
  bool usable = false;
  fileSystem.probeResource(
      resource, [&](const ProbeResult& result, OptionalError) { usable = result.isUsable; });
  if (!usable) return report("the file system refused to load");
  std::shared_ptr<FabricVolume> volume;
  fileSystem.loadResource(resource, {}, [&](auto loaded, OptionalError) { volume = loaded; });
  volume->mount([](OptionalError) {});
  ItemRef root;
  volume->activate([&](const ItemRef& item, OptionalError) { root = item; });

  const auto session = FuseSession::mount(volume, root, path, options);
  if (!session) return report(session.error());
  (*session)->serve([] { waiter.notifyUnmounted(); });
  const auto own = mountAt(path);

  if (!ready() || waiter.wait(-1) == EndWaiter::End::signal) {
    unmountThis(path, own);
    volume->cancelAll();
    (void)waiter.wait(patience);
  }
  volume->unmount([] {});
  volume->deactivate([](OptionalError) {});
  fileSystem.unloadResource(resource, {}, [](OptionalError) {});
  return done;
}

}  // namespace

constinit const std::string_view mountOptionNames =
    "ro, allow_other, default_permissions, attr_timeout=S, entry_timeout=S";

int runMount(const MountArguments& arguments) {
  MountOptions options;
  std::string text;
  for (const std::string& part : arguments.options) text += (text.empty() ? "" : ",") + part;
  if (auto parsed = MountOptions::parse(text)) {
    options = *parsed;
  } else {
    fail(parsed.error());
    return usage;
  }
  // The daemon's folder changes, so the socket's path must not depend on it.
  MountArguments used = arguments;
  if (!used.foreground) used.socket = std::filesystem::absolute(used.socket).string();
  if (used.socket.size() > maxSocketPathBytes) return fail(*whyNoHost(used.socket));
  if (const auto fuse = checkFuse(); !fuse) return fail(fuse.error());
  const Checked path = checkMountpoint(arguments.mountpoint);
  if (!path) return fail(path.error());
  if (arguments.foreground) {
    logToStandardError(arguments.debug);
    const auto ready = [&] {
      warnWithoutHost(used.socket);
      return true;
    };
    return serveMount(used, *path, options, ready,
                      [](const std::string& message) { return fail(message); });
  }
  const auto serve = [&](Daemon& daemon) {
    logToSystemLog();
    const auto ready = [&] {
      warnWithoutHost(used.socket);
      return daemon.ready();
    };
    return serveMount(used, *path, options, ready,
                      [&](const std::string& message) { return daemon.failed(message); });
  };
  return runAsDaemon(serve, [&] { return checkAnswers(*path); });
}

int runUnmount(const UnmountArguments& arguments) {
  const auto path = resolved(arguments.mountpoint);
  if (!path) return fail(withErrno(arguments.mountpoint, "cannot be used", path.error()));
  const auto unmounted = unmountOwn(*path, arguments.lazy ? UnmountMode::lazy : UnmountMode::whole);
  return unmounted ? done : fail(unmounted.error());
}

}  // namespace tarnel
