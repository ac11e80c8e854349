// The state of one mount, and the operations that the kernel calls on it. One source a family:
// AdapterLookup, AdapterDirectory, AdapterRead, AdapterRefusals; Adapter.cpp holds the session.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "DirectoryHandle.h"
#include "FuseReply.h"
#include "NodeTable.h"
#include "ReadOrder.h"
#include "control/SerialQueue.h"
#include "fs/FabricVolume.h"
#include "fusefs/FuseSession.h"

namespace tarnel {

class Adapter final : public FuseSession, public std::enable_shared_from_this<Adapter> {
 public:
  Adapter(std::shared_ptr<FabricVolume> served, const std::shared_ptr<FabricItem>& root,
          const MountOptions& mountOptions);
  ~Adapter() override;

  [[nodiscard]] std::expected<void, std::string> mountOn(const std::string& mountpoint);
  void serve(std::function<void()> ended) override;

  void lookup(fuse_req_t request, fuse_ino_t parent, const char* name);
  void forget(fuse_ino_t node, std::uint64_t lookups);
  void getattr(fuse_req_t request, fuse_ino_t node);
  void opendir(fuse_req_t request, fuse_ino_t node, const fuse_file_info& info);
  enum class Listing { names, withAttributes };
  void readdir(fuse_req_t request, std::size_t size, off_t offset, const fuse_file_info& info,
               Listing kind);
  void open(fuse_req_t request, fuse_ino_t node, const fuse_file_info& info);
  void read(fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset);
  void statfs(fuse_req_t request);
  void synchronize(fuse_req_t request);

  [[nodiscard]] FabricVolume& served() { return *volume; }

  // Answer interrupted requests: of programs that are ending, and of those that handle the signal.
  SerialQueue interrupts{"tarnel.interrupt"};
  SerialQueue handledInterrupts{"tarnel.patience"};

 private:
  // The item of a node; replies ESTALE and returns nullptr for a node that is not known.
  [[nodiscard]] std::shared_ptr<FabricItem> itemOf(fuse_req_t request, fuse_ino_t node);
  void replyToLookup(fuse_req_t request, const std::shared_ptr<FabricItem>& item,
                     const ItemAttributes& attributes, NodeTable::Clock::time_point askedAt);
  void reclaim(const std::shared_ptr<FabricItem>& item);
  void takeSnapshot(const std::shared_ptr<FabricItem>& directory,
                    FabricSource::Reply<std::shared_ptr<const DirectorySnapshot>> reply);
  void replyWithEntries(fuse_req_t request, const DirectoryHandle& handle,
                        const DirectorySnapshot& snapshot, std::size_t size, off_t offset,
                        Listing kind);
  [[nodiscard]] std::size_t addEntry(fuse_req_t request, char* to, std::size_t room,
                                     const DirectoryHandle& handle,
                                     const DirectorySnapshot& snapshot, std::uint64_t index,
                                     Listing kind, std::vector<fuse_ino_t>& counted);
  void loop();

  const std::shared_ptr<FabricVolume> volume;
  const MountOptions options;
  NodeTable nodes;
  ReadOrder reads;
  fuse_session* session = nullptr;    // destroyed with the adapter, after the last request
  std::string folder;                 // mounted on; set before the loops start
  std::atomic<bool> greeted = false;  // the kernel's INIT has been answered
  std::atomic<int> loopsRunning = 0;
  std::function<void()> onEnd;  // set before the loops start
};

// The table of operations for libfuse; their user data is the Adapter.
[[nodiscard]] const fuse_lowlevel_ops& adapterOperations();

}  // namespace tarnel
