// opendir, readdir and readdirplus.
#include <cerrno>
#include <memory>
#include <utility>
#include <vector>

#include "Adapter.h"
#include "PendingRequest.h"
#include "fusefs/AdapterLog.h"

namespace tarnel {
namespace {

using Clock = NodeTable::Clock;
using SnapshotPointer = std::shared_ptr<const DirectorySnapshot>;
using HandlePointer = std::shared_ptr<DirectoryHandle>;

// The most bytes of a name in a directory entry: FUSE_NAME_MAX of the kernel's protocol.
constexpr std::size_t maximumNameBytes = 1024;

// How long a snapshot may still stand in for lookups. A handle that is read for longer goes on with
// names alone, and the kernel asks for what it needs.
constexpr std::chrono::seconds snapshotServesLookups{10};

constexpr std::uint64_t dotEntries = 2;

HandlePointer& handleOf(const fuse_file_info& info) {
  return *reinterpret_cast<HandlePointer*>(info.fh);
}

std::size_t leaveOutLongNames(std::vector<FabricChild>& children) {
  return std::erase_if(children, [](const FabricChild& child) {
    return child.status.name.size() > maximumNameBytes;
  });
}

// ENOENT from readdir(2) is what an open folder that was removed says, and a C library takes it for
// the folder's end: one that cannot be listed would look empty.
int listingErrno(const FabricFailure& error) {
  const int number = systemErrno(volumeError(error));
  return number == ENOENT ? EIO : number;
}

struct stat typeOnly(std::uint64_t id, bool isDirectory) {
  struct stat made{};
  made.st_ino = id;
  made.st_mode = isDirectory ? S_IFDIR : S_IFREG;
  return made;
}

}  // namespace

void Adapter::takeSnapshot(const std::shared_ptr<FabricItem>& directory,
                           FabricSource::Reply<SnapshotPointer> reply) {
  volume->listing(directory, [directory, takenAt = Clock::now(), reply = std::move(reply)](
                                 FabricSource::Result<std::vector<FabricChild>> children) {
    if (!children) return reply(std::unexpected(std::move(children.error())));
    if (const std::size_t count = leaveOutLongNames(*children); count > 0) {
      logLeftOutNames(directory->relpath, count);
    }
    reply(std::make_shared<DirectorySnapshot>(DirectorySnapshot{std::move(*children), takenAt}));
  });
}

void Adapter::opendir(fuse_req_t request, fuse_ino_t node, const fuse_file_info& info) {
  const auto directory = itemOf(request, node);
  if (!directory) return;
  auto handle = std::make_unique<HandlePointer>(std::make_shared<DirectoryHandle>(directory));
  fuse_file_info opened = info;
  opened.fh = reinterpret_cast<std::uint64_t>(handle.get());
  // Released by releasedir, unless the kernel did not take it.
  if (fuse_reply_open(request, &opened) == 0) (void)handle.release();
}

void Adapter::readdir(fuse_req_t request, std::size_t size, off_t offset,
                      const fuse_file_info& info, Listing kind) {
  const HandlePointer handle = handleOf(info);
  if (const auto snapshot = handle->at(static_cast<std::uint64_t>(offset))) {
    return replyWithEntries(request, *handle, *snapshot, size, offset, kind);
  }
  const auto pending = PendingRequest::make(shared_from_this(), request);
  takeSnapshot(handle->directory, [self = shared_from_this(), pending, handle, size, offset,
                                   kind](FabricSource::Result<SnapshotPointer> taken) {
    if (!taken) return pending->fail(listingErrno(taken.error()));
    if (!pending->claim()) return;
    handle->replace(*taken);
    self->replyWithEntries(pending->request(), *handle, **taken, size, offset, kind);
  });
}

void Adapter::replyWithEntries(fuse_req_t request, const DirectoryHandle& handle,
                               const DirectorySnapshot& snapshot, std::size_t size, off_t offset,
                               Listing kind) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(size);
  const std::uint64_t end = snapshot.children.size() + dotEntries;
  std::vector<fuse_ino_t> counted;
  std::size_t used = 0;
  for (auto index = static_cast<std::uint64_t>(offset); index < end; ++index) {
    const std::size_t entry =
        addEntry(request, buffer.get() + used, size - used, handle, snapshot, index, kind, counted);
    if (entry > size - used) break;
    used += entry;
  }
  if (fuse_reply_buf(request, buffer.get(), used) != 0) {
    for (const fuse_ino_t node : counted) forget(node, 1);  // the kernel did not take them
  }
}

// Writes one entry and returns its size; when that is more than the room, nothing was written and
// nothing counted.
std::size_t Adapter::addEntry(fuse_req_t request, char* to, std::size_t room,
                              const DirectoryHandle& handle, const DirectorySnapshot& snapshot,
                              std::uint64_t index, Listing kind, std::vector<fuse_ino_t>& counted) {
  const FabricItem& directory = *handle.directory;
  const auto next = static_cast<off_t>(index + 1);
  const bool isDot = index < dotEntries;
  const FabricChild* const child = isDot ? nullptr : &snapshot.children[index - dotEntries];
  const char* const name = child ? child->status.name.c_str() : index == 0 ? "." : "..";
  const std::uint64_t id = child ? child->id : index == 0 ? directory.id : directory.parentID;
  fuse_entry_param entry{};  // node 0: a name that the kernel has to look up
  entry.attr = typeOnly(id, !child || child->status.isDirectory);
  if (kind == Listing::names) {
    return fuse_add_direntry(request, to, room, name, &entry.attr, next);
  }
  const std::size_t needed = fuse_add_direntry_plus(request, nullptr, 0, name, nullptr, 0);
  if (needed > room) return needed;
  const bool mayServe = child && Clock::now() - snapshot.takenAt < snapshotServesLookups &&
                        !nodes.isFresherThan(id, snapshot.takenAt);
  if (const auto item = mayServe ? volume->registerChild(directory, *child) : nullptr) {
    entry.ino = NodeTable::nodeID(*item);
    entry.attr = systemStat(volume->childAttributes(directory, *child, allAttributes));
    entry.attr_timeout = options.attributeTimeout;
    entry.entry_timeout = options.entryTimeout;
    if (const auto replaced = nodes.addLookup(item, snapshot.takenAt)) reclaim(replaced);
    counted.push_back(entry.ino);
  }
  return fuse_add_direntry_plus(request, to, room, name, &entry, next);
}

}  // namespace tarnel
