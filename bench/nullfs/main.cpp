// nullfs [-f] TREE MOUNTPOINT
//
// A FUSE server that does nothing but FUSE: it shows the names, sizes and modification times that
// TREE had at start, read-only, from memory. Every file's bytes are one pattern, not TREE's. What
// a measurement costs here is what the kernel's protocol costs: the floor of every other mount.
// Returns 0 once it is mounted and serves in the background; with -f it stays until unmounted.

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "Operations.h"

namespace tarnel::nullfs {
namespace {

constexpr int failed = 1;
constexpr int misused = 2;

struct Arguments {
  bool foreground = false;
  std::string tree;
  std::string mountpoint;
};

int loop(fuse_session* session) {
  const std::unique_ptr<fuse_loop_config, decltype(&fuse_loop_cfg_destroy)> config(
      fuse_loop_cfg_create(), &fuse_loop_cfg_destroy);
  return fuse_session_loop_mt(session, config.get()) == 0 ? 0 : failed;
}

int serveMounted(fuse_session* session, bool foreground) {
  if (fuse_daemonize(foreground ? 1 : 0) != 0 || fuse_set_signal_handlers(session) != 0) {
    return failed;
  }
  const int status = loop(session);
  fuse_remove_signal_handlers(session);
  return status;
}

int serve(const Arguments& arguments, Volume& volume) {
  std::string program = "nullfs";
  std::string options = "-oro,nosuid,nodev,fsname=nullfs,subtype=nullfs";
  char* argv[] = {program.data(), options.data(), nullptr};
  fuse_args args = FUSE_ARGS_INIT(2, argv);
  const auto ops = operations();
  const std::unique_ptr<fuse_session, decltype(&fuse_session_destroy)> session(
      fuse_session_new(&args, &ops, sizeof ops, &volume), &fuse_session_destroy);
  fuse_opt_free_args(&args);
  if (!session || fuse_session_mount(session.get(), arguments.mountpoint.c_str()) != 0) {
    return failed;  // the library has said why
  }
  const int status = serveMounted(session.get(), arguments.foreground);
  fuse_session_unmount(session.get());
  return status;
}

bool parse(std::span<char* const> words, Arguments& arguments) {
  if (!words.empty() && std::strcmp(words.front(), "-f") == 0) {
    arguments.foreground = true;
    words = words.subspan(1);
  }
  if (words.size() != 2) return false;
  arguments.tree = words[0];
  arguments.mountpoint = words[1];
  return true;
}

int run(std::span<char* const> words) {
  Arguments arguments;
  if (!parse(words, arguments)) {
    std::fputs("usage: nullfs [-f] TREE MOUNTPOINT\n", stderr);
    return misused;
  }
  auto tree = Tree::read(arguments.tree);
  if (!tree) {
    std::fprintf(stderr, "nullfs: %s: %s\n", arguments.tree.c_str(),
                 tree.error().message().c_str());
    return failed;
  }
  // The background process has "/" as its working folder, and unmounting takes place there.
  std::error_code error;
  arguments.mountpoint = std::filesystem::absolute(arguments.mountpoint, error).string();
  Volume volume = makeVolume(*std::move(tree));
  return serve(arguments, volume);
}

}  // namespace
}  // namespace tarnel::nullfs

int main(int argc, char** argv) {
  return tarnel::nullfs::run(std::span(argv + 1, static_cast<std::size_t>(argc - 1)));
}
