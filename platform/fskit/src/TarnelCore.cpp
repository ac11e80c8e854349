// The C surface over the core. Every catch of the adapter stands here.
#include "fskit/TarnelCore.h"

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "CallbackLog.h"
#include "ReplyOnce.h"
#include "control/SocketPaths.h"
#include "fskit/CoreHandles.h"

namespace tarnel {
namespace {

// The core works with what `work` is given: a shared reply. Whatever it throws becomes EIO, and so
// does a reply that could not be made ready.
template <class... Results, class Work>
void replying(void (*reply)(void*, TarnelError, Results...), void* context, Work work) noexcept {
  std::shared_ptr<ReplyOnce<Results...>> once;
  try {
    once = std::make_shared<ReplyOnce<Results...>>(reply, context);
  } catch (...) {
    return reply(context, surfaceInputOutput, Results{}...);
  }
  try {
    work(once);
  } catch (...) {
    once->fail();
  }
}

// The value of `work`, or an empty one when it throws.
template <class Work>
auto orEmpty(Work work) noexcept -> decltype(work()) {
  try {
    return work();
  } catch (...) {
    return {};
  }
}

TarnelFileSystem& of(TarnelCoreFileSystem* handle) {
  if (handle == nullptr) throw std::bad_alloc();
  return handle->fileSystem;
}

FabricVolume& of(const TarnelCoreVolume* handle) {
  if (handle == nullptr) throw std::bad_alloc();
  return *handle->volume;
}

ItemRef itemOf(const TarnelCoreItem* handle) { return handle != nullptr ? handle->item : nullptr; }

std::string_view view(TarnelText text) { return {text.bytes, text.length}; }
TarnelText surfaceText(std::string_view text) {
  return {.bytes = text.data(), .length = text.size()};
}

class NamedResource final : public Resource {
 public:
  explicit NamedResource(TarnelText type) : name(view(type)) {}
  [[nodiscard]] std::string_view typeName() const override { return name; }

 private:
  const std::string name;
};

TaskOptions taskOptions(const TarnelOptions& options) {
  TaskOptions all;
  for (std::size_t i = 0; i < options.count; ++i) {
    const char* const text = options.textAt(options.context, i);
    all.taskOptions.emplace_back(text != nullptr ? text : "");
  }
  return all;
}

TarnelTime surfaceTime(const ItemTime& time) {
  return {.seconds = time.seconds, .nanoseconds = time.nanoseconds};
}

TarnelAttributes surfaceAttributes(const ItemAttributes& attributes) {
  return {.valid = attributes.valid,
          .type = static_cast<std::int64_t>(attributes.type),
          .mode = attributes.mode,
          .linkCount = attributes.linkCount,
          .uid = attributes.uid,
          .gid = attributes.gid,
          .flags = attributes.flags,
          .size = attributes.size,
          .allocSize = attributes.allocSize,
          .fileID = attributes.fileID,
          .parentID = attributes.parentID,
          .accessTime = surfaceTime(attributes.accessTime),
          .modifyTime = surfaceTime(attributes.modifyTime),
          .changeTime = surfaceTime(attributes.changeTime),
          .birthTime = surfaceTime(attributes.birthTime)};
}

class CallbackPacker final : public DirectoryEntryPacking {
 public:
  explicit CallbackPacker(const TarnelPacker& functions) : packer(functions) {}
  [[nodiscard]] bool packEntry(std::string_view name, ItemType itemType, std::uint64_t itemID,
                               std::uint64_t nextCookie,
                               const std::optional<ItemAttributes>& attributes) override {
    std::optional<TarnelAttributes> given;
    if (attributes) given = surfaceAttributes(*attributes);
    return packer.packEntry(packer.context, surfaceText(name), static_cast<std::int64_t>(itemType),
                            itemID, nextCookie, given ? &*given : nullptr);
  }

 private:
  const TarnelPacker packer;
};

std::int64_t signedLength(std::size_t length) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  return length > static_cast<std::uint64_t>(most) ? most : static_cast<std::int64_t>(length);
}

class CallbackBuffer final : public MutableFileBuffer {
 public:
  explicit CallbackBuffer(const TarnelBuffer& functions) : buffer(functions) {}
  [[nodiscard]] std::int64_t length() const override { return signedLength(buffer.length); }
  void withUnsafeMutableBytes(const std::function<void(std::span<char>)>& use) override {
    use({static_cast<char*>(buffer.mutableBytes(buffer.context)), buffer.length});
  }

 private:
  const TarnelBuffer buffer;
};

// The core's replies as they go through the surface. The shared reply is dropped with them.
using ErrorOnce = std::shared_ptr<ReplyOnce<>>;

ErrorReply errorReply(const ErrorOnce& once) {
  return [once](const OptionalError& error) { once->send(error); };
}

void sendItem(ReplyOnce<TarnelCoreItem*>& once, ItemRef item, const OptionalError& error) {
  std::unique_ptr<TarnelCoreItem> handle;
  if (item) handle.reset(new (std::nothrow) TarnelCoreItem{std::move(item)});
  if (!error && !handle) return once.fail();
  // Whoever takes the reply takes the handle; a reply made before leaves it here.
  if (once.send(error, handle.get())) (void)handle.release();
}

// What only ever replies with an error, whatever empty results the core adds.
auto refusal(const ErrorOnce& once) {
  return [once](const auto&... results) {
    once->send(std::get<sizeof...(results) - 1>(std::tie(results...)));
  };
}

}  // namespace
}  // namespace tarnel

using namespace tarnel;  // NOLINT(google-build-using-namespace): the functions are C's

void tarnelSetLog(const TarnelLogLines* lines) noexcept {
  // Never destroyed: threads that nobody joins may still use it at the very end.
  if (auto* const made = new (std::nothrow) CallbackLog(*lines)) setLog(*made);
}

TarnelText tarnelLogSubsystem() noexcept { return surfaceText(TarnelFSKitSocket::appexBundleID); }

TarnelCoreFileSystem* tarnelFileSystemMake(TarnelText home, void (*becameReady)(void*),
                                           void* context) noexcept {
  return orEmpty([&] {
    return new TarnelCoreFileSystem{
        TarnelFileSystem(TarnelFSKitSocket::appexPath(view(home)),
                         [becameReady, context] { becameReady(context); })};
  });
}

void tarnelFileSystemRelease(TarnelCoreFileSystem* fileSystem) noexcept { delete fileSystem; }

void tarnelFileSystemProbe(TarnelCoreFileSystem* fileSystem, TarnelText resourceType,
                           TarnelProbeReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(fileSystem)
        .probeResource(NamedResource(resourceType),
                       [once](const ProbeResult& result, const OptionalError& error) {
                         once->send(error, surfaceText(result.name), result.containerID.data());
                       });
  });
}

void tarnelFileSystemLoad(TarnelCoreFileSystem* fileSystem, TarnelText resourceType,
                          TarnelOptions options, TarnelVolumeReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(fileSystem)
        .loadResource(NamedResource(resourceType), taskOptions(options),
                      [once](std::shared_ptr<FabricVolume> volume, const OptionalError& error) {
                        auto handle = std::make_unique<TarnelCoreVolume>(std::move(volume));
                        if (once->send(error, handle.get())) (void)handle.release();
                      });
  });
}

void tarnelFileSystemUnload(TarnelCoreFileSystem* fileSystem, TarnelText resourceType,
                            TarnelOptions options, TarnelReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(fileSystem)
        .unloadResource(NamedResource(resourceType), taskOptions(options), errorReply(once));
  });
}

void tarnelVolumeRelease(TarnelCoreVolume* volume) noexcept { delete volume; }

const uint8_t* tarnelVolumeIdentifier(const TarnelCoreVolume* volume) noexcept {
  return volume->volume->volumeID.data();
}

TarnelText tarnelVolumeName(const TarnelCoreVolume* volume) noexcept {
  return surfaceText(volume->volume->volumeName);
}

TarnelCapabilities tarnelVolumeCapabilities(const TarnelCoreVolume* volume) noexcept {
  return orEmpty([&] {
    const SupportedCapabilities capabilities = of(volume).supportedVolumeCapabilities();
    return TarnelCapabilities{
        .supportsPersistentObjectIDs = capabilities.supportsPersistentObjectIDs,
        .supports64BitObjectIDs = capabilities.supports64BitObjectIDs,
        .supportsHardLinks = capabilities.supportsHardLinks,
        .supportsSymbolicLinks = capabilities.supportsSymbolicLinks,
        .doesNotSupportVolumeSizes = capabilities.doesNotSupportVolumeSizes,
        .caseFormat = static_cast<std::int64_t>(capabilities.caseFormat)};
  });
}

TarnelStatistics tarnelVolumeStatistics(const TarnelCoreVolume* volume) noexcept {
  return orEmpty([&] {
    const StatFSResult statistics = of(volume).volumeStatistics();
    return TarnelStatistics{.fileSystemTypeName = surfaceText(FabricVolume::fileSystemTypeName),
                            .blockSize = statistics.blockSize,
                            .ioSize = statistics.ioSize,
                            .totalBlocks = statistics.totalBlocks,
                            .usedBlocks = statistics.usedBlocks,
                            .freeBlocks = statistics.freeBlocks,
                            .availableBlocks = statistics.availableBlocks,
                            .totalFiles = statistics.totalFiles,
                            .freeFiles = statistics.freeFiles};
  });
}

TarnelPathConfiguration tarnelVolumePathConfiguration() noexcept {
  return {.maximumLinkCount = FabricVolume::maximumLinkCount,
          .maximumNameLength = FabricVolume::maximumNameLength,
          .restrictsOwnershipChanges = FabricVolume::restrictsOwnershipChanges,
          .truncatesLongNames = FabricVolume::truncatesLongNames,
          .maximumXattrSize = FabricVolume::maximumXattrSize,
          .maximumFileSize = FabricVolume::maximumFileSize};
}

void tarnelVolumeUnimplementedInitializer() noexcept {
  std::fputs("Fatal error: use of unimplemented initializer 'init(volumeID:volumeName:)'\n",
             stderr);
  std::abort();
}

void tarnelVolumeMount(TarnelCoreVolume* volume, TarnelReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).mount(errorReply(once)); });
}

void tarnelVolumeUnmount(TarnelCoreVolume* volume, TarnelReply reply, void* context) noexcept {
  replying(reply, context,
           [&](const auto& once) { of(volume).unmount([once] { once->send(std::nullopt); }); });
}

void tarnelVolumeActivate(TarnelCoreVolume* volume, TarnelItemReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(volume).activate([once](ItemRef root, const OptionalError& error) {
      sendItem(*once, std::move(root), error);
    });
  });
}

void tarnelVolumeDeactivate(TarnelCoreVolume* volume, TarnelReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).deactivate(errorReply(once)); });
}

void tarnelVolumeSynchronize(TarnelCoreVolume* volume, TarnelReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).synchronize(errorReply(once)); });
}

void tarnelVolumeLookupItem(TarnelCoreVolume* volume, TarnelText name, bool isText,
                            const TarnelCoreItem* directory, TarnelItemReply reply,
                            void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(volume).lookupItem(FileName(std::string(view(name)), isText), itemOf(directory),
                          [once](ItemRef item, const auto&, const OptionalError& error) {
                            sendItem(*once, std::move(item), error);
                          });
  });
}

void tarnelVolumeGetAttributes(TarnelCoreVolume* volume, uint64_t wanted,
                               const TarnelCoreItem* item, TarnelAttributesReply reply,
                               void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(volume).getAttributes(
        wanted, itemOf(item),
        [once](const std::optional<ItemAttributes>& attributes, const OptionalError& error) {
          std::optional<TarnelAttributes> given;
          if (attributes) given = surfaceAttributes(*attributes);
          once->send(error, given ? &*given : nullptr);
        });
  });
}

void tarnelVolumeEnumerate(TarnelCoreVolume* volume, const TarnelCoreItem* directory,
                           uint64_t cookie, uint64_t verifier, const uint64_t* wanted,
                           TarnelPacker packer, TarnelVerifierReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(volume).enumerateDirectory(
        itemOf(directory), cookie, verifier,
        wanted != nullptr ? std::optional<WantedAttributes>(*wanted) : std::nullopt,
        std::make_shared<CallbackPacker>(packer),
        [once](std::uint64_t current, const OptionalError& error) { once->send(error, current); });
  });
}

void tarnelVolumeRead(TarnelCoreVolume* volume, const TarnelCoreItem* item, int64_t offset,
                      size_t length, TarnelBuffer buffer, TarnelCountReply reply,
                      void* context) noexcept {
  replying(reply, context, [&](const auto& once) {
    of(volume).read(
        itemOf(item), offset, signedLength(length), std::make_shared<CallbackBuffer>(buffer),
        [once](std::int64_t count, const OptionalError& error) { once->send(error, count); });
  });
}

void tarnelVolumeReclaimItem(TarnelCoreVolume* volume, const TarnelCoreItem* item,
                             TarnelReply reply, void* context) noexcept {
  replying(reply, context,
           [&](const auto& once) { of(volume).reclaimItem(itemOf(item), errorReply(once)); });
}

void tarnelItemRelease(TarnelCoreItem* item) noexcept { delete item; }

const void* tarnelItemIdentity(const TarnelCoreItem* item) noexcept {
  return item != nullptr ? item->item.get() : nullptr;
}

void tarnelVolumeRefuseCreateItem(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).createItem(refusal(once)); });
}

void tarnelVolumeRefuseCreateSymbolicLink(TarnelCoreVolume* volume, TarnelReply reply,
                                          void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).createSymbolicLink(refusal(once)); });
}

void tarnelVolumeRefuseCreateLink(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).createLink(refusal(once)); });
}

void tarnelVolumeRefuseRemoveItem(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).removeItem(refusal(once)); });
}

void tarnelVolumeRefuseRenameItem(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).renameItem(refusal(once)); });
}

void tarnelVolumeRefuseSetAttributes(TarnelCoreVolume* volume, TarnelReply reply,
                                     void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).setAttributes(refusal(once)); });
}

void tarnelVolumeRefuseWrite(TarnelCoreVolume* volume, TarnelReply reply, void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).write(refusal(once)); });
}

void tarnelVolumeRefuseReadSymbolicLink(TarnelCoreVolume* volume, TarnelReply reply,
                                        void* context) noexcept {
  replying(reply, context, [&](const auto& once) { of(volume).readSymbolicLink(refusal(once)); });
}
