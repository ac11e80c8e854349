// From the host's status to an item's attributes.
#include <algorithm>
#include <utility>

#include "Bridge.h"
#include "fs/FabricVolume.h"
#include "seam/VolumeLog.h"

namespace tarnel {
namespace {

constexpr std::int64_t blockBytes = 4096;
constexpr std::uint32_t readableModeBits = 07555;  // no write bits, no file-type bits
constexpr std::uint32_t directoryMode = 0555;
constexpr std::uint32_t fileMode = 0444;

// Division truncates toward zero, so before 1970 both parts are zero or negative.
ItemTime itemTime(std::int64_t ms) {
  const std::int64_t seconds = ms / 1000;
  return {.seconds = seconds, .nanoseconds = (ms - seconds * 1000) * 1'000'000};
}

std::uint64_t sizeOf(const FileStat& stat) {
  const std::int64_t size = stat.isDirectory ? blockBytes : std::max<std::int64_t>(stat.size, 0);
  return static_cast<std::uint64_t>(size);
}

std::uint32_t modeOf(const FileStat& stat) {
  if (stat.mode == 0) return stat.isDirectory ? directoryMode : fileMode;
  return stat.mode & readableModeBits;
}

}  // namespace

ItemAttributes FabricVolume::attributes(std::uint64_t id, std::uint64_t parentID,
                                        const FileStat& stat, WantedAttributes wanted) const {
  ItemAttributes made;
  const auto set = [&](ItemAttribute attribute, auto& field, auto value) {
    if ((wanted & bit(attribute)) == 0) return;
    field = value;
    made.valid |= bit(attribute);
  };
  const std::uint64_t size = sizeOf(stat);
  const ItemTime time = itemTime(stat.mtimeMs);
  // A symbolic link of the host is shown as a regular file.
  set(ItemAttribute::type, made.type, stat.isDirectory ? ItemType::directory : ItemType::file);
  set(ItemAttribute::mode, made.mode, modeOf(stat));
  set(ItemAttribute::linkCount, made.linkCount, std::max<std::uint32_t>(stat.nlink, 1));
  set(ItemAttribute::uid, made.uid, uid);
  set(ItemAttribute::gid, made.gid, gid);
  set(ItemAttribute::flags, made.flags, 0u);
  set(ItemAttribute::size, made.size, size);
  set(ItemAttribute::allocSize, made.allocSize, (size + blockBytes - 1) / blockBytes * blockBytes);
  set(ItemAttribute::fileID, made.fileID, id);
  set(ItemAttribute::parentID, made.parentID, parentID);
  set(ItemAttribute::accessTime, made.accessTime, time);
  set(ItemAttribute::modifyTime, made.modifyTime, time);
  set(ItemAttribute::changeTime, made.changeTime, time);
  set(ItemAttribute::birthTime, made.birthTime, time);
  return made;
}

ItemAttributes FabricVolume::attributes(const FabricItem& item, const FileStat& stat,
                                        WantedAttributes wanted) const {
  return attributes(item.id, item.parentID, stat, wanted);
}

ItemAttributes FabricVolume::childAttributes(const FabricItem& directory, const FabricChild& child,
                                             WantedAttributes wanted) const {
  return attributes(child.id, directory.id, child.status, wanted);
}

FileStat FabricVolume::synthesizedStat(std::string name) const {
  return {.name = std::move(name), .size = 0, .mtimeMs = mountTimeMs, .isDirectory = true};
}

FileStat FabricVolume::synthesizedStat(const FabricItem& item) const {
  if (item.relpath.empty()) return synthesizedStat(std::string(fileSystemTypeName));
  return synthesizedStat(std::string(item.relpath.substr(item.relpath.rfind('/') + 1)));
}

void FabricVolume::getAttributes(WantedAttributes wanted, const ItemRef& item,
                                 AttributesReply reply) {
  const auto own = std::dynamic_pointer_cast<FabricItem>(item);
  if (!own) return reply(std::nullopt, posixError(darwin::inputOutput));
  if (log().isDebugEnabled()) log().getAttributes(own->relpath, wanted);
  const FabricLocation location = FabricLocation::parse(own->relpath);
  const FabricLocation::InShare* const inShare = location.inShare();
  if (inShare == nullptr) {
    return reply(attributes(*own, synthesizedStat(*own), wanted), std::nullopt);
  }
  on<FileStat>(
      [&](FabricSource::Reply<FileStat> next) { source->stat(inShare->address, std::move(next)); },
      [self = shared_from_this(), own, wanted,
       reply = std::move(reply)](FabricSource::Result<FileStat> stat) {
        if (!stat) return self->replyToFailedAttributes(*own, stat.error(), wanted, reply);
        if (log().isDebugEnabled()) {
          const auto last = own->lastStat();
          log().getAttributesReply(own->relpath, stat->size, stat->mtimeMs, last ? last->size : -1);
        }
        const ItemAttributes fresh = self->attributes(*own, *stat, wanted);
        own->setLastStat(*stat);
        reply(fresh, std::nullopt);
      });
}

void FabricVolume::replyToFailedAttributes(const FabricItem& item, const FabricFailure& failure,
                                           WantedAttributes wanted,
                                           const AttributesReply& reply) const {
  const auto last = item.lastStat();
  if (last && mayServeLastKnownAttributes(failure)) {
    log().servedStale(item.relpath, last->size, description(failure));
    return reply(attributes(item, *last, wanted), std::nullopt);
  }
  log().getAttributesFailed(item.relpath, description(failure));
  reply(std::nullopt, volumeError(failure));
}

}  // namespace tarnel
