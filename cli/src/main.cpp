// tarnel: the command line.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <optional>
#include <sstream>
#include <string>

#include "Commands.h"
#include "Console.h"
#include "control/SocketPaths.h"

namespace tarnel {
namespace {

std::optional<std::string> socketOfEnvironment() {
  const char* const given = std::getenv("TARNEL_SOCKET");
  if (given == nullptr || *given == '\0') return std::nullopt;
  return given;
}

std::string defaultSocket() {
  return socketOfEnvironment().value_or(TarnelControlSocket::path(::getuid()));
}

// No file has an empty name: an unset variable of a script is wrong usage, not a path to look for.
const CLI::Validator notEmpty(
    [](const std::string& text) { return text.empty() ? "cannot be empty" : std::string(); }, "");

void addSocket(CLI::App& command, std::string& socket) {
  command.add_option("--socket", socket, "The host's control socket")
      ->type_name("PATH")
      ->check(notEmpty)
      ->capture_default_str();
}

void addVolumeOptions(CLI::App& command, VolumeArguments& arguments) {
  addSocket(command, arguments.socket);
  command.add_flag("--json", arguments.json, "One JSON object a line");
}

class CommandLine {
 public:
  int run(int argc, char** argv) {
    app.require_subcommand(0, 1);
    app.set_help_all_flag("--help-all", "Help of every command");
    app.footer(
        "The socket is --socket, else the environment's TARNEL_SOCKET, else one for this user in "
        "/tmp.\nExit status: 0 done, 1 failed, 2 wrong usage.");
    defineHost();
    defineSharing();
    defineMount();
    defineUnmount();
    defineReaders();
    defineCheck();
    defineGet();
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& help) {
      std::ostringstream text;
      app.exit(help, text);
      print(text.str());
      return statusAfterPrinting();
    } catch (const CLI::ParseError& error) {
      return wrongUsage(error.what());
    }
    return action ? action() : wrongUsage("a command is required");
  }

 private:
  int wrongUsage(const std::string& what) {
    std::string command = "tarnel";
    for (const CLI::App* const named : app.get_subcommands()) command += " " + named->get_name();
    fail(what + " (see `" + command + " --help`)");
    return usage;
  }

  // Options that may be given several times take one value each: what follows is another
  // argument's.
  void defineHost() {
    CLI::App* const command = app.add_subcommand("host", "Share folders until Ctrl-C");
    addSocket(*command, host.socket);
    command->add_option("--share", host.shares, "Share a folder as me/NAME")
        ->type_name("NAME=DIR")
        ->allow_extra_args(false)
        ->take_all();
    command->add_option("--peer", host.peers, "Share a folder under a peer's name")
        ->type_name("PEER/NAME=DIR")
        ->allow_extra_args(false)
        ->take_all();
    command->add_option("DIR", host.folders, "Folders to share under their own names")
        ->check(notEmpty);
    command->callback([this, command] {
      host.socketIsGiven = socketOfEnvironment().has_value() || command->count("--socket") > 0;
      action = [this] { return runHost(host); };
    });
  }

  void defineSharing() {
    CLI::App* const add = app.add_subcommand("share", "Have a running host share one more folder");
    addSocket(*add, share.socket);
    CLI::Option* const yes =
        add->add_flag("--yes", share.yes, "Leave likely secrets out without asking");
    add->add_flag("--force", share.force, "Share everything, likely secrets too")->excludes(yes);
    add->add_flag("--json", share.json, "One JSON object; never asks");
    add->add_option("NAME=DIR", share.share, "The folder and the name to share it under")
        ->required();
    add->callback([this] { action = [this] { return runShare(share); }; });

    CLI::App* const withdraw = app.add_subcommand("unshare", "Have a running host share one less");
    addSocket(*withdraw, unshare.socket);
    withdraw->add_flag("--json", unshare.json, "One JSON object");
    withdraw->add_option("NAME", unshare.name, "As `tarnel shares` lists it")
        ->required()
        ->check(notEmpty);
    withdraw->callback([this] { action = [this] { return runUnshare(unshare); }; });
  }

  void defineMount() {
    CLI::App* const command = app.add_subcommand("mount", "Mount the volume on a folder");
    addSocket(*command, mount.socket);
    CLI::Option* const foreground =
        command->add_flag("-f,--foreground", mount.foreground, "Stay in the foreground");
    command->add_flag("--debug", mount.debug, "Log every request (in the foreground)")
        ->needs(foreground);
    command->add_option("-o", mount.options, std::string(mountOptionNames))
        ->type_name("OPTIONS")
        ->allow_extra_args(false)
        ->take_all();
    command->add_option("MOUNTPOINT", mount.mountpoint, "An empty folder")
        ->required()
        ->check(notEmpty);
    command->callback([this, command] {
      mount.socketIsGiven = command->count("--socket") > 0;
      action = [this] { return runMount(mount); };
    });
  }

  void defineUnmount() {
    CLI::App* const command = app.add_subcommand("unmount", "Unmount, whatever the host does");
    command->add_flag("--lazy", unmount.lazy, "Also while something of it is in use");
    command->add_option("MOUNTPOINT", unmount.mountpoint, "Where the volume is mounted")
        ->required()
        ->check(notEmpty);
    command->callback([this] { action = [this] { return runUnmount(unmount); }; });
  }

  void defineReaders() {
    CLI::App* const shares = app.add_subcommand("shares", "List what the host shares");
    addVolumeOptions(*shares, volume);
    shares->callback([this] { action = [this] { return runShares(volume); }; });

    CLI::App* const list = app.add_subcommand("ls", "List a folder of the volume");
    addVolumeOptions(*list, volume);
    list->add_flag("-l", volume.longFormat, "Mode, links, owner, group, size and time too");
    list->add_option("PATH", volume.paths, "The root without one")->expected(0, 1);
    list->callback([this] { action = [this] { return runList(volume); }; });

    CLI::App* const stat = app.add_subcommand("stat", "Show one file's or folder's status");
    addVolumeOptions(*stat, volume);
    stat->add_option("PATH", volume.paths, "A path of the volume; / is its root")
        ->required()
        ->expected(1);
    stat->callback([this] { action = [this] { return runStat(volume); }; });

    CLI::App* const cat = app.add_subcommand("cat", "Write files to standard output");
    addSocket(*cat, volume.socket);
    cat->add_option("PATH", volume.paths, "Files, one behind the other")->required();
    cat->callback([this] { action = [this] { return runCat(volume); }; });
  }

  void defineCheck() {
    CLI::App* const command =
        app.add_subcommand("check-host", "Tell a host's author whether it speaks the protocol");
    addSocket(*command, check.socket);
    command->add_flag("--json", check.json, "One JSON object a line");
    command->callback([this] { action = [this] { return runCheckHost(check); }; });
  }

  void defineGet() {
    CLI::App* const command = app.add_subcommand("get", "Copy files and folders");
    addSocket(*command, get.socket);
    command->add_flag("--json", get.json, "Failures and a summary, one JSON object a line");
    command->add_flag("--force", get.force, "Replace files that are in the way");
    command->add_flag("--resume", get.resume,
                      "Skip files that are whole: of the host's size and modification time");
    command->add_option("PATH", get.paths, "Paths of the volume, then DEST: where to")->required();
    command->footer(
        "DEST is a folder that exists, which takes each PATH under its last name, or the new name\n"
        "of the one PATH. A file appears under its name only when it is whole. What failed is\n"
        "listed at the end; the rest is there. On a terminal a line tells how far the copy is.\n" +
        app.get_footer());
    command->callback([this] { action = [this] { return runGet(get); }; });
  }

  CLI::App app{"A folder that is fetched on demand from a host application, read-only.", "tarnel"};
  HostArguments host{.socket = defaultSocket()};
  ShareArguments share{.socket = defaultSocket()};
  UnshareArguments unshare{.socket = defaultSocket()};
  MountArguments mount{.socket = defaultSocket()};
  UnmountArguments unmount;
  VolumeArguments volume{.socket = defaultSocket()};
  CheckArguments check{.socket = defaultSocket()};
  GetArguments get{.socket = defaultSocket()};
  std::function<int()> action;
};

}  // namespace
}  // namespace tarnel

namespace {

// A program that was started without one of the three standard streams would give their numbers to
// sockets, and print into them. What stands there instead cannot be written: output is not lost
// without a word.
void openStandardStreams() {
  int fd = ::open("/dev/null", O_RDONLY);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDONLY);
  if (fd >= 0) ::close(fd);
}

}  // namespace

int main(int argc, char** argv) {
  openStandardStreams();
  ::signal(SIGPIPE, SIG_IGN);
  int status = tarnel::failed;
  try {
    status = tarnel::CommandLine().run(argc, argv);
  } catch (const std::exception& error) {  // no more memory, no more threads
    tarnel::fail(std::string("cannot go on: ") + error.what());
  }
  std::fflush(nullptr);
  // A thread may be blocked in a socket call of a host that never answers: nothing waits for it,
  // and nothing that it uses is taken away.
  std::_Exit(status);
}
