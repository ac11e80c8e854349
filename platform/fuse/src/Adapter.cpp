// The session: mounting, the threads that take the kernel's requests, and the table of operations.
#include "Adapter.h"

#include <fuse_log.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>
#include <vector>

#include "AdapterRefusals.h"
#include "HelperMessages.h"
#include "ReadAhead.h"
#include "control/Mutex.h"
#include "control/Thread.h"
#include "fusefs/MountTable.h"

namespace tarnel {
namespace {

// Operations never wait, so two threads keep the kernel served on any machine: one may be building
// a large listing's entries while the other takes requests.
constexpr int loopThreads = 2;

// libfuse prints what goes wrong; a user gets it as part of our own line instead.
class LibraryMessages {
 public:
  static void install() { fuse_set_log_func(&LibraryMessages::take); }
  static std::string last() {
    MutexLock hold(lock());
    return std::exchange(text(), std::string());
  }

 private:
  static Mutex& lock() {
    static Mutex mutex;
    return mutex;
  }
  static std::string& text() {
    static std::string message;
    return message;
  }
  static void take(fuse_log_level, const char* format, va_list arguments) {
    char line[512];
    std::vsnprintf(line, sizeof line, format, arguments);
    std::string message = line;
    while (!message.empty() && message.back() == '\n') message.pop_back();
    MutexLock hold(lock());
    text() = std::move(message);
  }
};

std::string libraryOptions(const MountOptions& options) {
  std::string text = "nosuid,nodev,fsname=Tarnel,subtype=tarnelfs,max_read=" +
                     std::to_string(FabricVolume::maximumReadBytes);
  if (options.readOnlyFlag) text += ",ro";
  if (options.allowOther) text += ",allow_other";
  if (options.defaultPermissions) text += ",default_permissions";
  return text;
}

Adapter& adapterOf(fuse_req_t request) {
  return *static_cast<Adapter*>(fuse_req_userdata(request));
}

void init(void*, fuse_conn_info* connection) {
  // Attributes come with every listing, so the kernel should always take them: a lookup costs a
  // round trip to the host. Requests are small, so splicing them through a pipe costs more than a
  // copy.
  connection->want |= connection->capable & FUSE_CAP_READDIRPLUS;
  connection->want &= ~static_cast<unsigned>(FUSE_CAP_READDIRPLUS_AUTO | FUSE_CAP_SPLICE_READ |
                                             FUSE_CAP_SPLICE_WRITE | FUSE_CAP_SPLICE_MOVE);
  // One request to the host each: the second half of a longer one would only be asked for when the
  // first has been decoded. libfuse wants the number here and as an option.
  connection->max_read = FabricVolume::maximumReadBytes;
  // Cached pages go when the attributes say that the file changed.
  connection->want |= connection->capable & FUSE_CAP_AUTO_INVAL_DATA;
}

fuse_lowlevel_ops makeOperations() {
  fuse_lowlevel_ops ops{};
  ops.init = init;
  ops.lookup = [](fuse_req_t request, fuse_ino_t parent, const char* name) {
    adapterOf(request).lookup(request, parent, name);
  };
  ops.forget = [](fuse_req_t request, fuse_ino_t node, std::uint64_t lookups) {
    adapterOf(request).forget(node, lookups);
    fuse_reply_none(request);
  };
  ops.forget_multi = [](fuse_req_t request, std::size_t count, fuse_forget_data* forgets) {
    for (std::size_t i = 0; i < count; ++i) {
      adapterOf(request).forget(forgets[i].ino, forgets[i].nlookup);
    }
    fuse_reply_none(request);
  };
  ops.getattr = [](fuse_req_t request, fuse_ino_t node, fuse_file_info*) {
    adapterOf(request).getattr(request, node);
  };
  ops.opendir = [](fuse_req_t request, fuse_ino_t node, fuse_file_info* info) {
    adapterOf(request).opendir(request, node, *info);
  };
  ops.readdir = [](fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset,
                   fuse_file_info* info) {
    adapterOf(request).readdir(request, size, offset, *info, Adapter::Listing::names);
  };
  ops.readdirplus = [](fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset,
                       fuse_file_info* info) {
    adapterOf(request).readdir(request, size, offset, *info, Adapter::Listing::withAttributes);
  };
  ops.releasedir = [](fuse_req_t request, fuse_ino_t, fuse_file_info* info) {
    delete reinterpret_cast<std::shared_ptr<DirectoryHandle>*>(info->fh);
    fuse_reply_err(request, 0);
  };
  ops.open = [](fuse_req_t request, fuse_ino_t node, fuse_file_info* info) {
    adapterOf(request).open(request, node, *info);
  };
  ops.read = [](fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset,
                fuse_file_info*) { adapterOf(request).read(request, node, size, offset); };
  ops.statfs = [](fuse_req_t request, fuse_ino_t) { adapterOf(request).statfs(request); };
  ops.fsync = [](fuse_req_t request, fuse_ino_t, int, fuse_file_info*) {
    adapterOf(request).synchronize(request);
  };
  ops.fsyncdir = ops.fsync;
  addRefusals(ops);
  return ops;
}

}  // namespace

const fuse_lowlevel_ops& adapterOperations() {
  static const fuse_lowlevel_ops operations = makeOperations();
  return operations;
}

std::expected<std::shared_ptr<FuseSession>, std::string> FuseSession::mount(
    std::shared_ptr<FabricVolume> volume, ItemRef root, const std::string& mountpoint,
    const MountOptions& options) {
  const auto rootItem = std::dynamic_pointer_cast<FabricItem>(root);
  if (!volume || !rootItem) return std::unexpected("the volume has no root");
  auto adapter = std::make_shared<Adapter>(std::move(volume), rootItem, options);
  if (auto mounted = adapter->mountOn(mountpoint); !mounted) {
    return std::unexpected(mounted.error());
  }
  return adapter;
}

Adapter::Adapter(std::shared_ptr<FabricVolume> served, const std::shared_ptr<FabricItem>& root,
                 const MountOptions& mountOptions)
    : volume(std::move(served)), options(mountOptions), nodes(root) {}

Adapter::~Adapter() {
  if (session == nullptr) return;
  // The threads that serve keep the adapter, so a mount that was served is gone by now and this
  // only releases what belongs to it; one that nobody came to serve is taken away.
  fuse_session_unmount(session);
  fuse_session_destroy(session);
}

std::expected<void, std::string> Adapter::mountOn(const std::string& mountpoint) {
  LibraryMessages::install();
  const std::string text = libraryOptions(options);
  std::vector<char*> arguments;
  for (const char* argument : {"tarnel", "-o", text.c_str()}) {
    arguments.push_back(const_cast<char*>(argument));
  }
  fuse_args args = FUSE_ARGS_INIT(static_cast<int>(arguments.size()), arguments.data());
  session = fuse_session_new(&args, &adapterOperations(), sizeof(fuse_lowlevel_ops), this);
  fuse_opt_free_args(&args);
  if (session == nullptr) return std::unexpected("cannot start FUSE: " + LibraryMessages::last());
  folder = mountpoint;
  HelperMessages helper;
  if (fuse_session_mount(session, mountpoint.c_str()) != 0) {
    const std::string said = helper.take();
    return std::unexpected("cannot mount on " + mountpoint + ": " +
                           (said.empty() ? LibraryMessages::last() : said));
  }
  return {};
}

void Adapter::serve(std::function<void()> ended) {
  onEnd = std::move(ended);
  loopsRunning = loopThreads;
  for (int i = 0; i < loopThreads; ++i) {
    startThread("tarnel.fuse", [self = shared_from_this()] { self->loop(); }).detach();
  }
}

void Adapter::loop() {
  fuse_buf buffer{};
  while (fuse_session_exited(session) == 0) {
    const int received = fuse_session_receive_buf(session, &buffer);
    if (received == -EINTR) continue;
    if (received <= 0) break;
    fuse_session_process_buf(session, &buffer);
    if (!greeted.exchange(true)) raiseReadAhead(folder);
  }
  std::free(buffer.mem);
  if (--loopsRunning == 0) onEnd();
}

}  // namespace tarnel
