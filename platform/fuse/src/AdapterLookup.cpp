// lookup, forget, getattr, statfs and fsync.
#include <cerrno>
#include <utility>

#include "Adapter.h"
#include "PendingRequest.h"
#include "control/Text.h"

namespace tarnel {
namespace {

using Clock = NodeTable::Clock;

}  // namespace

std::shared_ptr<FabricItem> Adapter::itemOf(fuse_req_t request, fuse_ino_t node) {
  auto item = nodes.item(node);
  if (!item) fuse_reply_err(request, ESTALE);
  return item;
}

void Adapter::lookup(fuse_req_t request, fuse_ino_t parent, const char* name) {
  const auto directory = itemOf(request, parent);
  if (!directory) return;
  const auto pending = PendingRequest::make(shared_from_this(), request);
  const std::string bytes = name;
  volume->lookupItem(
      FileName(bytes, isValidUtf8(bytes)), directory,
      [self = shared_from_this(), pending, askedAt = Clock::now()](
          const ItemRef& found, const std::optional<FileName>&, OptionalError error) {
        if (error) return pending->fail(systemErrno(*error));
        const auto item = std::static_pointer_cast<FabricItem>(found);
        if (!pending->claim()) {
          // Nobody was told of the item; it stays only if somebody else was.
          if (!self->nodes.knows(*item)) self->reclaim(item);
          return;
        }
        const auto stat = item->lastStat();
        const ItemAttributes attributes = self->volume->attributes(
            *item, stat ? *stat : self->volume->synthesizedStat(*item), allAttributes);
        self->replyToLookup(pending->request(), item, attributes, askedAt);
      });
}

void Adapter::replyToLookup(fuse_req_t request, const std::shared_ptr<FabricItem>& item,
                            const ItemAttributes& attributes, Clock::time_point askedAt) {
  fuse_entry_param entry{};
  entry.ino = NodeTable::nodeID(*item);
  entry.attr = systemStat(attributes);
  entry.attr_timeout = options.attributeTimeout;
  entry.entry_timeout = options.entryTimeout;
  // Counted before the reply: the kernel may use the node, or forget it, before this call returns.
  if (const auto replaced = nodes.addLookup(item, askedAt)) reclaim(replaced);
  if (fuse_reply_entry(request, &entry) != 0) forget(entry.ino, 1);  // the kernel did not take it
}

void Adapter::forget(fuse_ino_t node, std::uint64_t lookups) {
  if (const auto item = nodes.forget(node, lookups)) reclaim(item);
}

void Adapter::reclaim(const std::shared_ptr<FabricItem>& item) {
  volume->reclaimItem(item, [](OptionalError) {});
}

void Adapter::getattr(fuse_req_t request, fuse_ino_t node) {
  const auto item = itemOf(request, node);
  if (!item) return;
  const auto pending = PendingRequest::make(shared_from_this(), request);
  volume->getAttributes(allAttributes, item,
                        [self = shared_from_this(), pending, node, askedAt = Clock::now()](
                            const std::optional<ItemAttributes>& attributes, OptionalError error) {
                          if (error) return pending->fail(systemErrno(*error));
                          if (!pending->claim()) return;
                          self->nodes.refreshed(node, askedAt);
                          const struct stat status = systemStat(*attributes);
                          fuse_reply_attr(pending->request(), &status,
                                          self->options.attributeTimeout);
                        });
}

void Adapter::statfs(fuse_req_t request) {
  const StatFSResult facts = volume->volumeStatistics();
  struct statvfs made{};
  made.f_bsize = static_cast<unsigned long>(facts.ioSize);
  made.f_frsize = static_cast<unsigned long>(facts.blockSize);
  made.f_blocks = facts.totalBlocks;
  made.f_bfree = facts.freeBlocks;
  made.f_bavail = facts.availableBlocks;
  made.f_files = facts.totalFiles;
  made.f_ffree = facts.freeFiles;
  made.f_favail = facts.freeFiles;
  made.f_namemax = FabricVolume::maximumNameLength;
  fuse_reply_statfs(request, &made);
}

void Adapter::synchronize(fuse_req_t request) {
  volume->synchronize(
      [request](OptionalError error) { fuse_reply_err(request, error ? systemErrno(*error) : 0); });
}

}  // namespace tarnel
