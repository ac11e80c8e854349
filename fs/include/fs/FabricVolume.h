// The one volume: answers the system's operations from what the host says, and never changes
// anything there.
//
// Replies: each operation calls its reply exactly once. Fixed answers, refusals and the attributes
// of the root and of peers are replied inside the call; everything that needs the host is replied
// later, from a thread of the source's, and the call returns at once. Such a reply must not block,
// least of all wait for another operation of the volume. The system's request cannot cancel work
// once it started; deactivate and unmount end all that waits, with `disconnected`.
//
// Errors are VolumeErrors: EIO for an item that is not the volume's, ENOENT for a name
// that is unsafe or unknown, EROFS for every change, EINVAL for reading a link or at a negative
// offset, otherwise fabricErrno of the source's failure; 4506 for a stale directory cookie.
// Threads: any operation from any thread. Lifetime: shared; work under way keeps the volume.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "control/SocketPaths.h"
#include "fs/DirectoryEntryPacking.h"
#include "fs/FabricEntry.h"
#include "fs/FabricItem.h"
#include "fs/FabricItemTable.h"
#include "fs/FabricLocation.h"
#include "fs/FabricSource.h"
#include "fs/MutableFileBuffer.h"
#include "fs/VolumeReplies.h"
#include "seam/Resource.h"
#include "seam/VolumeFacts.h"

namespace tarnel {

class FabricVolume : public std::enable_shared_from_this<FabricVolume> {
 public:
  static constexpr std::string_view fileSystemTypeName = TarnelFSKitSocket::fileSystemType;
  static constexpr std::int64_t maximumReadBytes = 262'144;  // one request to the source

  // Path-configuration values. maximumNameLength is announced only: the host judges names.
  static constexpr std::int64_t maximumLinkCount = 1;
  static constexpr std::int64_t maximumNameLength = 255;
  static constexpr bool restrictsOwnershipChanges = true;
  static constexpr bool truncatesLongNames = false;
  static constexpr std::int64_t maximumXattrSize = 0;
  static constexpr std::uint64_t maximumFileSize = 9'223'372'036'854'775'807u;

  // uid and gid own every item; mountTimeMs (since 1970) is the time of what the volume makes up.
  [[nodiscard]] static std::shared_ptr<FabricVolume> make(Uuid volumeID, std::string volumeName,
                                                          std::shared_ptr<FabricSource> source,
                                                          std::uint32_t uid, std::uint32_t gid,
                                                          std::int64_t mountTimeMs);
  FabricVolume(Uuid volumeID, std::string volumeName) = delete;  // a volume without a source

  const Uuid volumeID;
  const std::string volumeName;

  [[nodiscard]] SupportedCapabilities supportedVolumeCapabilities() const;
  [[nodiscard]] StatFSResult volumeStatistics() const;

  // Life cycle. Options and flags mean nothing to this volume and have no parameter.
  void mount(const ErrorReply& reply);
  void activate(const ItemReply& reply);     // the root item
  void deactivate(const ErrorReply& reply);  // ends what waits for the host
  void unmount(const std::function<void()>& reply);
  void synchronize(const ErrorReply& reply);

  // Lookup and attributes.
  void lookupItem(const FileName& name, const ItemRef& directory, NamedItemReply reply);
  void getAttributes(WantedAttributes wanted, const ItemRef& item, AttributesReply reply);
  [[nodiscard]] ItemAttributes attributes(const FabricItem& item, const FileStat& stat,
                                          WantedAttributes wanted) const;
  [[nodiscard]] FileStat synthesizedStat(const FabricItem& item) const;

  // Enumeration. The packer is kept until the reply; wanted absent asks for names alone, with the
  // dot entries. Every call lists the directory again: a cookie is good only with the verifier of
  // an equal listing.
  void enumerateDirectory(const ItemRef& directory, std::uint64_t cookie, std::uint64_t verifier,
                          std::optional<WantedAttributes> wanted,
                          std::shared_ptr<DirectoryEntryPacking> packer, VerifierReply reply);
  void enumerate(const std::shared_ptr<FabricItem>& directory, std::uint64_t cookie,
                 std::uint64_t verifier, std::optional<WantedAttributes> wanted,
                 std::shared_ptr<DirectoryEntryPacking> packer, VerifierReply reply);
  void children(const std::shared_ptr<FabricItem>& directory,
                std::optional<WantedAttributes> wanted,
                FabricSource::Reply<std::vector<FabricEntry>> reply);
  [[nodiscard]] static std::uint64_t directoryVerifier(std::span<const std::string_view> names);

  // One listing for an adapter that serves a whole enumeration from it: the sorted, safe children.
  void listing(const std::shared_ptr<FabricItem>& directory,
               FabricSource::Reply<std::vector<FabricChild>> reply);
  // Counts an entry of a listing as its lookup: the live item of its path, made if there is none,
  // with the listing's status as its last known one. Not for a listing that is older than what the
  // item has. nullptr for a share in its peer's listing: what the listing says of it is made up, so
  // it has to be looked up.
  [[nodiscard]] std::shared_ptr<FabricItem> registerChild(const FabricItem& directory,
                                                          const FabricChild& child);
  [[nodiscard]] ItemAttributes childAttributes(const FabricItem& directory,
                                               const FabricChild& child,
                                               WantedAttributes wanted) const;

  // Reads. The buffer is kept until the reply; bytes go to its position 0.
  void read(const ItemRef& item, std::int64_t offset, std::int64_t length,
            std::shared_ptr<MutableFileBuffer> buffer, CountReply reply);
  void readBytes(const ItemRef& item, std::int64_t offset, std::int64_t length,
                 std::shared_ptr<MutableFileBuffer> buffer, CountReply reply);

  void reclaimItem(const ItemRef& item, const ErrorReply& reply);

  // Refusals: no argument is looked at, so none is taken.
  void createItem(const NamedItemReply& reply) const;
  void createSymbolicLink(const NamedItemReply& reply) const;
  void createLink(const NameReply& reply) const;
  void removeItem(const ErrorReply& reply) const;
  void renameItem(const NameReply& reply) const;
  void setAttributes(const AttributesReply& reply) const;
  void write(const CountReply& reply) const;
  void readSymbolicLink(const NameReply& reply) const;  // EINVAL: nothing here is ever a link

  // Ends everything that waits for the host, with `disconnected`, a read between two chunks too.
  void cancelAll();

 private:
  FabricVolume(Uuid volumeID, std::string volumeName, std::shared_ptr<FabricSource> source,
               std::uint32_t uid, std::uint32_t gid, std::int64_t mountTimeMs);

  [[nodiscard]] ItemAttributes attributes(std::uint64_t id, std::uint64_t parentID,
                                          const FileStat& stat, WantedAttributes wanted) const;
  [[nodiscard]] FileStat synthesizedStat(std::string name) const;
  [[nodiscard]] FabricChild synthesizedChild(const FabricItem& parent, std::string name);
  void lookUpPeer(std::string relpath, const FileName& name, std::uint64_t parentID,
                  NamedItemReply reply);
  void lookUpInShare(std::string relpath, const FileName& name, std::uint64_t parentID,
                     NamedItemReply reply);
  void replyToFailedAttributes(const FabricItem& item, const FabricFailure& failure,
                               WantedAttributes wanted, const AttributesReply& reply) const;

  const std::shared_ptr<FabricSource> source;
  // Counts the cancelAll()s; a read under way asks for no further chunk after one.
  const std::shared_ptr<std::atomic<std::uint64_t>> cancellations =
      std::make_shared<std::atomic<std::uint64_t>>(0);
  FabricItemTable table;
  const std::uint32_t uid;
  const std::uint32_t gid;
  const std::int64_t mountTimeMs;
};

}  // namespace tarnel
