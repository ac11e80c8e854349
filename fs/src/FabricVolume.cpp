// Set-up, fixed answers, the life cycle and reclaim.
#include "fs/FabricVolume.h"

#include <utility>

#include "seam/VolumeLog.h"

namespace tarnel {

std::shared_ptr<FabricVolume> FabricVolume::make(Uuid volumeID, std::string volumeName,
                                                 std::shared_ptr<FabricSource> source,
                                                 std::uint32_t uid, std::uint32_t gid,
                                                 std::int64_t mountTimeMs) {
  return std::shared_ptr<FabricVolume>(
      new FabricVolume(volumeID, std::move(volumeName), std::move(source), uid, gid, mountTimeMs));
}

FabricVolume::FabricVolume(Uuid identifier, std::string name,
                           std::shared_ptr<FabricSource> fabricSource, std::uint32_t owner,
                           std::uint32_t group, std::int64_t mountedAtMs)
    : volumeID(identifier),
      volumeName(std::move(name)),
      source(std::move(fabricSource)),
      uid(owner),
      gid(group),
      mountTimeMs(mountedAtMs) {}

SupportedCapabilities FabricVolume::supportedVolumeCapabilities() const {
  return {.supportsPersistentObjectIDs = false,
          .supports64BitObjectIDs = true,
          .supportsHardLinks = false,
          .supportsSymbolicLinks = false,
          .doesNotSupportVolumeSizes = true,
          .caseFormat = SupportedCapabilities::CaseFormat::sensitive};
}

// One full block, whatever the host serves: the volume has no size of its own.
StatFSResult FabricVolume::volumeStatistics() const {
  return {.fileSystemTypeName = std::string(fileSystemTypeName),
          .blockSize = 4096,
          .ioSize = 4096,
          .totalBlocks = 1,
          .usedBlocks = 1,
          .freeBlocks = 0,
          .availableBlocks = 0,
          .totalFiles = 1,
          .freeFiles = 0};
}

void FabricVolume::mount(const ErrorReply& reply) { reply(std::nullopt); }

void FabricVolume::activate(const ItemReply& reply) { reply(table.activateRoot(), std::nullopt); }

void FabricVolume::deactivate(const ErrorReply& reply) {
  cancelAll();
  reply(std::nullopt);
}

void FabricVolume::unmount(const std::function<void()>& reply) {
  cancelAll();
  reply();
}

void FabricVolume::synchronize(const ErrorReply& reply) { reply(std::nullopt); }

void FabricVolume::cancelAll() {
  ++*cancellations;
  source->cancelAll();
}

void FabricVolume::reclaimItem(const ItemRef& item, const ErrorReply& reply) {
  const auto own = std::dynamic_pointer_cast<FabricItem>(item);
  if (!own) return reply(posixError(darwin::inputOutput));
  if (log().isDebugEnabled()) log().reclaimItem(own->relpath, own->id);
  table.reclaim(*own);
  reply(std::nullopt);
}

}  // namespace tarnel
